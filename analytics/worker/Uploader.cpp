#include "analytics/worker/Uploader.h"

#include "analytics/proto/BatchMessage.h"
#include "analytics/store/Gzip.h"
#include "analytics/upload/EngineVersion.h"
#include "analytics/upload/UploadRequest.h"
#include "analytics/worker/UploadLog.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

constexpr int statusOK = 200;
constexpr int statusNoContent = 204;
constexpr int statusServiceUnavailable = 503;
constexpr int statusCannotAcceptTraffic = 529;

/// The alarm goes by uptime, the schedule by the clock: they may part a little in an hour.
constexpr double tolerance = 1; // seconds

bool isSuccess(int status)
{
    return status == statusOK || status == statusNoContent;
}

bool asksToStayAway(int status)
{
    return status == statusServiceUnavailable || status == statusCannotAcceptTraffic;
}

bool wasCancelled(const Result<HttpResponse> &response)
{
    return !response && response.error().domain == "http" &&
           response.error().code == static_cast<int>(HttpFailure::Cancelled);
}

} // namespace

Uploader::Uploader(const Services &services)
    : services_(services),
      alarm_(services.worker, services.clock, [this] { uploadDataOrRegisterAlarm(); }),
      request_(services.worker, services.transport)
{
}

void Uploader::setDestination(std::optional<Destination> destination)
{
    stop();
    destination_ = std::move(destination);
}

void Uploader::setSettings(const APMRemoteConfig &settings, std::string subdomain)
{
    settings_ = settings;
    subdomain_ = std::move(subdomain);
    alarm_.cancel(); // it may be time by them
}

void Uploader::stop()
{
    alarm_.cancel();
    request_.drop();
    inProgress_.reset();
    pass_.reset();
    holdOff_.reset();
}

// Schedule

void Uploader::updateSchedule()
{
    if (!destination_ || pass_)
        return;
    alarm_.check(); // the machine may have slept
    if (pass_)
        return;
    if (holdOff_ && holdOff_->about)
        alarm_.cancel(); // there may be something else by now
    if (const auto due = alarm_.due()) {
        writeLog(services_.monitor, uploadLog::taskExists,
                 uploadLog::seconds(*due - services_.clock.secondsOfUptime()));
        return;
    }
    if (isHeldBack())
        return;
    if (const auto due = nextDue()) {
        alarm_.set(*due);
        writeLog(services_.monitor, uploadLog::scheduled,
                 uploadLog::seconds(*due - services_.clock.secondsOfUptime()));
    }
}

void Uploader::uploadDataOrRegisterAlarm()
{
    if (!destination_ || pass_ || isHeldBack())
        return;
    const auto due = nextDue();
    if (!due)
        return;
    if (*due <= services_.clock.secondsOfUptime() + tolerance)
        beginPass();
    else
        alarm_.set(*due);
}

bool Uploader::isHeldBack()
{
    const double uptime = services_.clock.secondsOfUptime();
    if (const double left = suspensionLeft(services_.record.suspendedUntil(), uptime); left > 0) {
        writeLog(services_.monitor, uploadLog::suspended, uploadLog::seconds(left));
        alarm_.set(uptime + left);
        return true;
    }
    if (destination_->host.isReachable(services_.network))
        return false;
    writeLog(services_.monitor, uploadLog::noNetwork);
    return true;
}

/// Seconds of uptime. Nothing, also where the database cannot be asked now: whoever stores the next event or
/// comes back to the program asks again.
std::optional<double> Uploader::nextDue()
{
    const auto waiting = services_.store.waiting();
    if (!waiting)
        return {};
    if (waiting->isEmpty) {
        writeLog(services_.monitor, uploadLog::nothingToSchedule);
        return {};
    }
    const double now = services_.clock.secondsSince1970();
    const double next = nextTryTime(stateWith(*waiting), settings_, now);
    if (next == 0) {
        writeLog(services_.monitor, uploadLog::noNextTime);
        return {};
    }
    if (holdOff_ && holdOff_->about && *holdOff_->about != *waiting)
        holdOff_.reset();
    return std::max(services_.clock.secondsOfUptime() + std::max(next - now, 0.0),
                    holdOff_ ? holdOff_->until : 0);
}

UploadState Uploader::stateWith(const WaitingData &waiting) const
{
    return {.newestEvent = waiting.newestEvent,
            .newestBundle = waiting.newestBundle,
            .hasRealtime = waiting.hasRealtime,
            .isDebug = services_.isDebug,
            .lastSuccess = services_.record.lastSuccess(),
            .lastFailure = services_.record.lastFailure(),
            .lastBackoff = services_.record.lastBackoff()};
}

// A pass

void Uploader::beginPass()
{
    pass_ = Pass();
    ++passNumber_;
    pass_->isWaitingForSettings = services_.fetcher.fetchRemoteConfig();
    if (!pass_->isWaitingForSettings)
        bundleInNextTurn();
}

void Uploader::settingsFetchDidEnd()
{
    if (pass_ && std::exchange(pass_->isWaitingForSettings, false))
        bundleInNextTurn();
}

/// So that events, and the program's end, get in between.
void Uploader::bundleInNextTurn()
{
    services_.worker.perform([this, number = passNumber_] {
        if (pass_ && number == passNumber_)
            bundleRawEvents();
    });
}

void Uploader::bundleRawEvents()
{
    if (pass_->bundlesMade < settings_.integer(APMSetting::MaxBundlesCreatedPerIteration)) {
        const BundleLimits limits{settings_.integer(APMSetting::MaxEventsPerBundle),
                                  settings_.count(APMSetting::MaxBatchSize)};
        const auto taken = services_.store.bundleOldest(destination_->appID, limits);
        if (taken && *taken > 0) {
            ++pass_->bundlesMade;
            bundleInNextTurn();
            return;
        }
        if (!taken)
            pass_->trouble = taken.error().message; // what is queued already may go all the same
    }
    uploadData();
}

void Uploader::uploadData()
{
    if (request_.isUnderWay()) {
        writeLog(services_.monitor, uploadLog::isPending);
        return;
    }
    if (!destination_->host.isReachable(services_.network)) {
        writeLog(services_.monitor, uploadLog::notConnected);
        pass_.reset(); // when there is a network again, the schedule is updated
        return;
    }
    auto batch = services_.store.nextBatch(destination_->appID, settings_.integer(APMSetting::MaxBundles),
                                           settings_.count(APMSetting::MaxBatchSize));
    if (!batch) {
        comeToNothing(batch.error().message);
    } else if (batch->isEmpty()) {
        writeLog(services_.monitor, uploadLog::noData);
        comeToNothing(std::exchange(pass_->trouble, {})); // the pass goes before it is told
    } else {
        send(*std::move(batch));
    }
}

void Uploader::send(BundleBatch batch)
{
    if (batch.messages.empty()) {
        writeLog(services_.monitor, uploadLog::noBundles);
        comeToNothing("bundles without contents");
        return;
    }
    if (inProgress_) {
        writeLog(services_.monitor, uploadLog::stillInProgress);
        return;
    }
    const double now = services_.clock.secondsSince1970();
    const double lastSuccess = services_.record.lastSuccess();
    writeLog(services_.monitor, uploadLog::uploading,
             lastSuccess == 0 ? "never" : uploadLog::seconds(now - lastSuccess));
    auto body =
        gzip(BatchMessage::encode({now, std::string(engineVersion()), services_.isDebug}, batch.messages));
    if (!body) {
        comeToNothing(body.error().message);
        return;
    }
    batch.messages = {};
    const std::string what = uploadLog::seconds(now * 1'000) + ", " + std::to_string(batch.marks.size()) +
                             " bundles in " + std::to_string(body->size()) + " bytes";
    inProgress_ = std::move(batch);
    request_.send(uploadRequest(destination_->host, subdomain_, *std::move(body), settings_),
                  [this](const Result<HttpResponse> &response) {
                      networkUploadCompletionHandlerWithResponse(response);
                  });
    writeLog(services_.monitor, uploadLog::sent, what);
}

/// Where nothing has gone wrong, all that waits is another app's: then anything new is a reason to try again.
void Uploader::comeToNothing(const std::string &trouble)
{
    pass_.reset();
    const double pause = settings_.number(APMSetting::RetryTime);
    holdOff_ = HoldOff{.until = services_.clock.secondsOfUptime() + pause};
    if (!trouble.empty())
        writeLog(services_.monitor, uploadLog::cameToNothing, uploadLog::seconds(pause) + ", " + trouble);
    else if (const auto waiting = services_.store.waiting())
        holdOff_->about = *waiting;
    updateSchedule();
}

// Completion

// networkUploadCompletionHandlerWithResponse:error:
void Uploader::networkUploadCompletionHandlerWithResponse(const Result<HttpResponse> &response)
{
    const BundleBatch batch = *std::exchange(inProgress_, std::nullopt);
    if (wasCancelled(response)) { // by the program's end, which is no failure of the server's
        comeToNothing(response.error().message);
        return;
    }
    pass_.reset();
    holdOff_.reset();
    if (response && isSuccess(response->status))
        didSucceed(*response, batch);
    else
        didFail(response, batch);
    updateSchedule();
}

void Uploader::didSucceed(const HttpResponse &response, const BundleBatch &batch)
{
    writeLog(services_.monitor, uploadLog::succeeded,
             std::to_string(response.status) + ", " + std::to_string(response.body.size()));
    services_.record.didSucceed(services_.clock.secondsSince1970(), batch.newestEvent);
    if (services_.store.didUpload(batch))
        return;
    services_.record.suspend(services_.clock.secondsOfUptime() + suspensionSeconds);
    writeLog(services_.monitor, uploadLog::notDeleted, uploadLog::seconds(suspensionSeconds));
}

void Uploader::didFail(const Result<HttpResponse> &response, const BundleBatch &batch)
{
    const int status = response ? response->status : 0;
    const double now = services_.clock.secondsSince1970();
    if (asksToStayAway(status))
        services_.record.didBackOff(now);
    else
        services_.record.didFail(now);
    writeLog(services_.monitor, uploadLog::failed,
             std::to_string(status) + ", " + (response ? "refused" : response.error().message));
    if (const auto counted = services_.store.didFail(batch); !counted)
        writeLog(services_.monitor, uploadLog::retriesNotCounted, counted.error().message);
}

} // namespace skyflare
