#include "analytics/worker/SettingsFetcher.h"

#include "analytics/upload/UploadRequest.h"
#include "analytics/worker/UploadLog.h"

#include <string_view>
#include <utility>

namespace skyflare {

namespace {

constexpr int statusOK = 200;
constexpr int statusNotFound = 404;

constexpr std::string_view noSettings = "{}";

} // namespace

SettingsFetcher::SettingsFetcher(const Services &services, Hooks hooks)
    : services_(services), hooks_(std::move(hooks)), request_(services.worker, services.transport)
{
}

void SettingsFetcher::setSource(std::optional<Source> source)
{
    cancel();
    source_ = std::move(source);
}

void SettingsFetcher::readKept()
{
    if (!source_ || isRead_)
        return;
    const auto kept = services_.store.settings();
    if (!kept)
        return; // who opens the database has said why; it is tried again
    isRead_ = true;
    if (!*kept)
        return;
    const auto answer = SettingsAnswer::parse((*kept)->data);
    if (!answer)
        return; // damaged: they are fetched anew
    fetchedAt_ = (*kept)->timestamp;
    hooks_.accepted(*answer);
}

bool SettingsFetcher::isFresh() const
{
    if (!fetchedAt_)
        return false;
    // From the future: the clock was set back, and they may be of any age.
    const double age = services_.clock.secondsSince1970() - *fetchedAt_;
    return age >= 0 && age < settings_.number(APMSetting::ConfigCacheTime);
}

bool SettingsFetcher::fetchRemoteConfig()
{
    if (!source_ || request_.isUnderWay())
        return request_.isUnderWay();
    readKept();
    const double uptime = services_.clock.secondsOfUptime();
    if (isFresh() || uptime < nextTry_ || !source_->host.isReachable(services_.network))
        return false;
    nextTry_ = uptime + settings_.number(APMSetting::RetryTime);
    request_.send(configurationRequest(source_->host, source_->app, settings_),
                  [this](const Result<HttpResponse> &answer) { didAnswer(answer); });
    return true;
}

void SettingsFetcher::cancel()
{
    if (request_.drop())
        nextTry_ = 0;
}

void SettingsFetcher::forget()
{
    cancel();
    fetchedAt_.reset();
    nextTry_ = 0;
}

void SettingsFetcher::didAnswer(const Result<HttpResponse> &answer)
{
    const int status = answer ? answer->status : 0;
    if (const Result<> taken = answer ? take(*answer) : Result<>(answer.error()); !taken)
        writeLog(services_.monitor, uploadLog::settingsNotFetched,
                 std::to_string(status) + ", " + taken.error().message);
    hooks_.ended();
}

Result<> SettingsFetcher::take(const HttpResponse &response)
{
    APMRemoteConfigRecord record{response.body, services_.clock.secondsSince1970()};
    if (response.status == statusNotFound)
        record.data.assign(noSettings.begin(), noSettings.end());
    else if (response.status != statusOK)
        return Error{"settings", response.status, "the server has no settings to give"};
    const auto parsed = SettingsAnswer::parse(record.data);
    if (!parsed)
        return parsed.error();
    writeLog(services_.monitor, uploadLog::settingsFetched,
             std::to_string(response.status) + ", " + std::to_string(record.data.size()));
    fetchedAt_ = record.timestamp;
    nextTry_ = 0;
    if (const auto kept = services_.store.keepSettings(record); !kept)
        writeLog(services_.monitor, uploadLog::settingsNotKept, kept.error().message);
    hooks_.accepted(*parsed);
    return {};
}

} // namespace skyflare
