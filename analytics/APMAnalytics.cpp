#include "analytics/APMAnalytics.h"

#include "analytics/APMMeasurement.h"
#include "analytics/sessions/SessionLog.h"
#include "analytics/worker/MeasurementLog.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace skyflare {

namespace {

using Counted = APMOperationQueue::Counted;

constexpr std::array<std::string_view, 3> screenParameters{"_sn", "_sc", "_si"};

Error closedError()
{
    return {"analytics", 3, "The engine has been closed"};
}

/// An event that another component hands on has its screen among its parameters.
void separateScreenParameters(LogEventCall &call)
{
    if (!call.addedScreenParameters.empty() || !APMDataTypeValidator::isForwardedEventOrigin(call.origin))
        return;
    for (const std::string_view name : screenParameters) {
        const auto found = call.parameters.find(name);
        if (found == call.parameters.end())
            continue;
        // Of any other kind it stays, to be refused with the rest.
        if (auto value = scalarOf(found->second)) {
            call.addedScreenParameters.push_back({found->first, *std::move(value)});
            call.parameters.erase(found);
        }
    }
}

} // namespace

/// What is known of an end that has begun. Main's.
struct APMAnalytics::Closing {
    std::function<void()> closed;
    bool isOver = false;

    void report()
    {
        if (!std::exchange(isOver, true) && closed)
            std::exchange(closed, nullptr)();
    }
};

APMAnalytics::APMAnalytics(Services services)
    : UnspecifiedFeatures(services.monitor),
      monitor_(services.monitor),
      clock_(services.clock),
      ledger_(services.ledger),
      suite_(services.suite),
      queue_(services.queues.makeSerialQueue(apmAnalyticsQueueLabel)),
      operations_(queue_),
      measurement_(std::make_unique<APMMeasurement>(services))
{
    if (services.prepareThread)
        queue_->async(services.prepareThread);
}

APMAnalytics::~APMAnalytics()
{
    if (closing_)
        closing_->isOver = true; // its timer finds nobody
}

void APMAnalytics::startWithConfiguration(const APMAnalyticsOptions &options)
{
    if (std::exchange(isStarted_, true) || closing_)
        return;
    queue_->async([this, options, at = clock_.secondsSince1970()] { startOnQueue(options, at); });
    operations_.resume();
}

void APMAnalytics::startOnQueue(const APMAnalyticsOptions &options, double startedAt)
{
    options_ = options;
    collection_ = collectionFor(suite_.value(suiteKeys::analyticsCollection));
    measurement_->start(options, collection_, startedAt);
}

Collection APMAnalytics::collectionFor(std::optional<bool> choice) const
{
    return isCollectionEnabled(options_, choice) ? Collection::On : Collection::Off;
}

bool APMAnalytics::perform(APMOperationQueue::Operation operation)
{
    return operations_.addOperation(std::move(operation), Counted::No);
}

void APMAnalytics::logEventWithName(std::optional<std::string> name, PropertyList::Dictionary parameters)
{
    LogEventCall call;
    call.origin = appOrigin;
    call.name = std::move(name);
    call.parameters = std::move(parameters);
    accept(std::move(call));
}

void APMAnalytics::logEventWithOrigin(std::string origin, std::optional<std::string> name,
                                      PropertyList::Dictionary parameters)
{
    logEventWithOrigin(std::move(origin), std::move(name), std::move(parameters), EventOptions());
}

void APMAnalytics::logInternalEventWithOrigin(std::string origin, std::optional<std::string> name,
                                              PropertyList::Dictionary parameters)
{
    logEventWithOrigin(std::move(origin), std::move(name), std::move(parameters),
                       {.isPublicEvent = IsPublicEvent::No});
}

void APMAnalytics::logEventWithOrigin(std::string origin, std::optional<std::string> name,
                                      PropertyList::Dictionary parameters, const EventOptions &options)
{
    LogEventCall call;
    call.origin = std::move(origin);
    call.isPublicEvent = options.isPublicEvent;
    call.name = std::move(name);
    call.parameters = std::move(parameters);
    call.timestamp = options.timestamp;
    call.ignoreEnabled = options.ignoreEnabled;
    call.ignoreInterceptor = options.ignoreInterceptor;
    accept(std::move(call));
}

void APMAnalytics::accept(LogEventCall call)
{
    ledger_.count(LedgerEntry::Accepted);
    if (!operations_.addOperation([this, call = std::move(call)]() mutable { logOnQueue(std::move(call)); }))
        ledger_.count(LedgerEntry::Abandoned);
}

void APMAnalytics::logOnQueue(LogEventCall call)
{
    separateScreenParameters(call);
    if (!call.timestamp || !std::isfinite(*call.timestamp)) {
        call.timestamp = clock_.secondsSince1970();
        if (call.name == screenViewName)
            call.secondsOfUptime = clock_.secondsOfUptime();
    }
    call.enabled = collection_;
    if (!call.ignoreInterceptor)
        call.interceptor = interceptor_;
    measurement_->logEventWithOrigin(std::move(call));
}

void APMAnalytics::setUserPropertyString(std::optional<PropertyList> value,
                                         std::optional<std::string> forName)
{
    setUserProperty(
        {UserPropertyCall::Kind::Public, std::string(appOrigin), std::move(forName), std::move(value)});
}

void APMAnalytics::setUserID(std::optional<PropertyList> userID)
{
    setUserProperty({UserPropertyCall::Kind::UserID, std::string(appOrigin), "_id", std::move(userID)});
}

void APMAnalytics::setInternalUserProperty(std::optional<PropertyList> value,
                                           std::optional<std::string> forName, std::string withOrigin)
{
    setUserProperty(
        {UserPropertyCall::Kind::Internal, std::move(withOrigin), std::move(forName), std::move(value)});
}

void APMAnalytics::setUserProperty(UserPropertyCall call)
{
    perform([this, call = std::move(call)]() mutable {
        call.enabled = collection_;
        measurement_->setUserAttribute(std::move(call));
    });
}

void APMAnalytics::setAnalyticsCollectionEnabled(bool enabled)
{
    perform([this, enabled] {
        collection_ = collectionFor(enabled);
        measurement_->setAnalyticsCollectionEnabled(enabled, collection_);
    });
}

void APMAnalytics::setSessionTimeoutInterval(double seconds)
{
    if (!(seconds >= 0)) { // nor is what is no number
        writeLog(monitor_, measurementLog::negativeTimeout);
        seconds = 0;
    }
    perform([this, seconds] { measurement_->setSessionTimeoutInterval(seconds); });
}

void APMAnalytics::sessionIDWithCompletion(const SessionIDCompletion &completion)
{
    if (!completion) {
        writeLog(monitor_, measurementLog::nilSessionIDCompletion);
        return;
    }
    if (!perform([this, completion] { measurement_->sessionID(completion); }))
        completion(closedError());
}

std::optional<std::string> APMAnalytics::appInstanceID() const
{
    return measurement_->appInstanceID();
}

void APMAnalytics::resetAnalyticsData()
{
    perform([this] { measurement_->resetAnalyticsData(collection_); });
}

void APMAnalytics::setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters)
{
    perform([this, parameters = std::move(parameters)]() mutable {
        measurement_->setDefaultEventParameters(std::move(parameters), collection_);
    });
}

void APMAnalytics::tellSessions(std::function<void(Sessions &)> what)
{
    perform([this, what = std::move(what)]() mutable { measurement_->tellSessions(std::move(what)); });
}

void APMAnalytics::applicationDidBecomeActive()
{
    tellSessions(
        [at = SessionMoment::now(clock_)](Sessions &sessions) { sessions.applicationDidBecomeActive(at); });
    perform([this] { measurement_->didBecomeActive(); });
}

void APMAnalytics::applicationWillResignActive()
{
    tellSessions(
        [at = SessionMoment::now(clock_)](Sessions &sessions) { sessions.applicationWillResignActive(at); });
}

void APMAnalytics::viewDidAppear(std::string className, std::uint64_t controllerID)
{
    tellSessions([at = SessionMoment::now(clock_), className = std::move(className),
                  controllerID](Sessions &sessions) { sessions.viewDidAppear(className, controllerID, at); });
}

void APMAnalytics::setScreenName(std::optional<std::string> name, std::optional<std::string> screenClass)
{
    if (std::this_thread::get_id() != mainThread_) {
        writeLog(monitor_, sessionLog::notOnMainThread);
        return;
    }
    tellSessions([at = SessionMoment::now(clock_),
                  names = APMScreenViewReporter::Names{std::move(name), std::move(screenClass)}](
                     Sessions &sessions) { sessions.setScreenName(names, at); });
}

void APMAnalytics::userPropertiesIncludingInternal(IncludingInternal includingInternal,
                                                   std::shared_ptr<DispatchQueue> queue,
                                                   UserPropertiesCallback callback)
{
    auto answer = [queue = std::move(queue),
                   callback = std::move(callback)](const Result<std::vector<APMUserAttribute>> &result) {
        queue->async([callback, result] { callback(result); });
    };
    const bool isAsked = perform([this, includingInternal, answer] {
        if (collection_ == Collection::Off && includingInternal == IncludingInternal::No) {
            writeLog(monitor_, measurementLog::queryWhileDisabled);
            answer(Error{"analytics", 4, std::string(measurementLog::queryWhileDisabled.text)});
        } else {
            measurement_->userPropertiesIncludingInternal(includingInternal, answer);
        }
    });
    if (!isAsked)
        answer(closedError());
}

void APMAnalytics::maxUserPropertiesForOrigin(std::string_view origin,
                                              const std::shared_ptr<DispatchQueue> &queue,
                                              std::function<void(std::int64_t)> callback)
{
    const std::int64_t most =
        origin == appOrigin ? measurement_->mostUserProperties() : std::numeric_limits<std::int64_t>::max();
    queue->async([most, callback = std::move(callback)] { callback(most); });
}

void APMAnalytics::setLogEventInterceptor(LogEventInterceptor interceptor)
{
    std::shared_ptr<const LogEventInterceptor> shared;
    if (interceptor)
        shared = std::make_shared<const LogEventInterceptor>(std::move(interceptor));
    perform([this, shared = std::move(shared)] { interceptor_ = shared; });
}

LogEventListenerToken APMAnalytics::addLogEventListener(LogEventListener listener)
{
    if (!listener) {
        writeLog(monitor_, measurementLog::nilListener);
        return 0;
    }
    const LogEventListenerToken token = ++lastToken_;
    perform([this, token, listener = std::move(listener)] {
        measurement_->addLogEventListener(token, listener);
    });
    return token;
}

void APMAnalytics::removeLogEventListener(LogEventListenerToken token)
{
    perform([this, token] { measurement_->removeLogEventListener(token); });
}

void APMAnalytics::notifyEventListeners(const APMEvent &event)
{
    perform([this, event] { measurement_->notifyEventListeners(event); });
}

void APMAnalytics::close(SerialQueue &mainQueue, std::chrono::nanoseconds atMost,
                         std::function<void()> closed)
{
    if (closing_)
        return;
    closing_ = std::make_shared<Closing>();
    closing_->closed = std::move(closed);
    mainQueue.asyncAfter(atMost, [this, closing = closing_] {
        if (!closing->isOver)
            giveUp();
    });
    // Each stage closes behind the last of what it had accepted, and hands the closing on.
    const std::size_t dropped = operations_.closeThen([this, &mainQueue, closing = closing_] {
        measurement_->closeThen([&mainQueue, closing] { mainQueue.async([closing] { closing->report(); }); });
    });
    ledger_.count(LedgerEntry::Abandoned, dropped);
}

void APMAnalytics::giveUp()
{
    const std::size_t left = operations_.discard() + measurement_->discard();
    ledger_.count(LedgerEntry::Abandoned, left);
    if (left > 0)
        writeLog(monitor_, measurementLog::leftBehind, std::to_string(left));
    closing_->report();
}

} // namespace skyflare
