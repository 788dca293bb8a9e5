#include "analytics/worker/Uploads.h"

#include "analytics/worker/UploadLog.h"

#include <utility>

namespace skyflare {

namespace {

/// Nothing: none is named, or it is unusable.
std::optional<UploadHost> hostOf(std::string_view key, const std::string &text, APMMonitor &monitor)
{
    if (text.empty())
        return {};
    const auto host = UploadHost::parse(text);
    if (host)
        return *host;
    writeLog(monitor, uploadLog::hostUnusable, std::string(key) + ", " + host.error().message);
    return {};
}

} // namespace

Uploads::Uploads(Services services)
    : services_(std::move(services)),
      store_({services_.journal, services_.databases, services_.monitor, services_.clock, services_.random}),
      record_(services_.defaults),
      fetcher_({store_, services_.worker, services_.monitor, services_.clock, services_.transport,
                services_.network},
               {[this](const SettingsAnswer &answer) { accept(answer); },
                [this] { uploader_.settingsFetchDidEnd(); }}),
      uploader_({store_, record_, fetcher_, services_.worker, services_.monitor, services_.clock,
                 services_.transport, services_.network, services_.isDebug})
{
    fetcher_.setSettings(services_.settings);
    uploader_.setSettings(services_.settings, {});
}

void Uploads::start(const APMAnalyticsOptions &options, const APMAppData &app, Collection collection)
{
    const auto host = hostOf("MIPEME_ANALYTICS_COLLECTION_HOST", options.collectionHost, services_.monitor);
    const auto configurationHost =
        hostOf("MIPEME_ANALYTICS_CONFIGURATION_HOST", options.configurationHost, services_.monitor);
    if (!services_.transport || options.appID.empty())
        return;
    if (host)
        destination_ = {*host, options.appID};
    if (configurationHost) {
        source_ = {*configurationHost, app};
        source_->app.appId = options.appID;
    }
    if (destination_ && services_.network)
        services_.network->observe([this] { services_.worker.perform([this] { isScheduleOld_ = true; }); });
    setCollection(collection);
}

void Uploads::setCollection(Collection collection)
{
    if ((!destination_ && !source_) || isOn_ == (collection == Collection::On))
        return;
    isOn_ = !isOn_;
    uploader_.setDestination(isOn_ ? destination_ : std::nullopt);
    fetcher_.setSource(isOn_ ? source_ : std::nullopt);
    lookAnew();
}

/// Fetches the settings if it is time, and updates the schedule when no more work waits.
void Uploads::lookAnew()
{
    (void)fetcher_.fetchRemoteConfig();
    isScheduleOld_ = true;
}

void Uploads::didReset()
{
    uploader_.stop();
    record_.reset();
    fetcher_.forget();
    lookAnew();
}

void Uploads::didDrain()
{
    if (std::exchange(isScheduleOld_, false))
        uploader_.updateSchedule();
}

void Uploads::close()
{
    if (destination_ && services_.network)
        services_.network->observe({});
    uploader_.setDestination(std::nullopt);
    fetcher_.setSource(std::nullopt);
    destination_.reset();
    source_.reset();
}

void Uploads::accept(const SettingsAnswer &answer)
{
    const APMRemoteConfig settings =
        answer.values.empty() ? services_.settings : APMRemoteConfig(answer.values);
    fetcher_.setSettings(settings);
    uploader_.setSettings(settings, answer.uploadSubdomain);
    isScheduleOld_ = true;
    services_.applySettings(settings);
}

} // namespace skyflare
