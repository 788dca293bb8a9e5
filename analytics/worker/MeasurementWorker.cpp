#include "analytics/worker/MeasurementWorker.h"

#include "analytics/validation/RefusalLog.h"
#include "analytics/worker/MeasurementLog.h"

#include <utility>

namespace skyflare {

namespace {

constexpr double staleDataLookInterval = 3'600; // seconds; the setting's smallest

} // namespace

MeasurementWorker::MeasurementWorker(const MeasurementServices &services, WorkerTurns &worker)
    : MeasurementWorker(services, worker, MeasurementLimits::of(services.settings))
{
}

MeasurementWorker::MeasurementWorker(const MeasurementServices &services, WorkerTurns &worker,
                                     const MeasurementLimits &limits)
    : services_(services),
      databases_({services.monitor, services.clock, services.ledger, services.openDatabase}, limits.store),
      journal_({databases_, services.monitor, services.clock, services.ledger}),
      listeners_(services.monitor),
      intake_(services.monitor, services.ledger, limits.validation),
      recorder_({journal_, services.monitor, services.clock, services.ledger, services.config}, limits,
                services.settings.number(APMSetting::TimeZoneOffsetMinutes),
                services.debugMode ? DebugMode::On : DebugMode::Off,
                {.processSessionFromEvent =
                     [this](const APMEvent &event) { sessions_.processSessionFromEvent(event); },
                 .updateSchedule = [this] { uploads_.didStoreEvent(); }}),
      properties_({journal_, recorder_, services.monitor, services.clock, services.ledger}, limits),
      firstOpen_(services.suite, journal_),
      reset_({services.suite, journal_, services.monitor}),
      sessions_(services, worker,
                {[this](LogEventCall call) { logEvent(std::move(call)); },
                 [this](UserPropertyCall call) { setUserAttribute(std::move(call)); }}),
      uploads_({.journal = journal_,
                .databases = databases_,
                .monitor = services.monitor,
                .clock = services.clock,
                .random = services.random,
                .defaults = services.config.defaults(),
                .worker = worker,
                .transport = services.transport,
                .network = services.network,
                .isDebug = services.debugMode,
                .settings = services.settings,
                .applySettings = [this](const APMRemoteConfig &settings) { applySettings(settings); }}),
      mostUserProperties_(limits.publicUserProperties)
{
}

void MeasurementWorker::start(const APMAnalyticsOptions &options, Collection collection, double startedAt)
{
    isDeactivated_ = options.collectionDeactivated;
    services_.app.appId = options.appID;
    journal_.setAppData(services_.app);
    setInstanceID(services_.suite.appInstanceID());
    writeLog(services_.monitor, measurementLog::started, startOrigin);
    if (isDeactivated_) {
        writeLog(services_.monitor, measurementLog::deactivated);
        return;
    }
    if (reset_.wipeIfPending()) {
        sessions_.handleReset();
        uploads_.didReset();
    }
    uploads_.start(options, services_.app, collection);
    logFirstOpenIfDue(collection, startedAt);
    sessions_.start(options, collection);
}

void MeasurementWorker::setInstanceID(const Result<std::string> &made)
{
    if (!made) {
        writeLog(services_.monitor, measurementLog::noInstanceID);
        return;
    }
    services_.app.appInstanceId = *made;
    journal_.setAppData(services_.app);
    const std::scoped_lock lock(instanceIDMutex_);
    instanceID_ = *made;
}

std::optional<std::string> MeasurementWorker::appInstanceID() const
{
    const std::scoped_lock lock(instanceIDMutex_);
    return instanceID_;
}

bool MeasurementWorker::isDropped(const LogEventCall &call)
{
    if (!isDeactivated_ && (call.enabled == Collection::On || call.ignoreEnabled))
        return false;
    services_.ledger.count(LedgerEntry::Disabled);
    if (services_.monitor.isLogging(measurementLog::eventWhileDisabled.level))
        writeLog(services_.monitor, measurementLog::eventWhileDisabled,
                 described(std::optional<std::string_view>(call.name)));
    return true;
}

// logEventOnWorkerQueueWithOrigin:…, logEventOnWorkerQueue:notifyEventListeners:
void MeasurementWorker::logEvent(LogEventCall call)
{
    if (isDropped(call))
        return;
    hasLogged_ = true;
    logFirstOpenIfDue(call.enabled, services_.clock.secondsSince1970());
    const double timestamp = *call.timestamp;
    const auto secondsOfUptime = call.secondsOfUptime;
    const IsPublicEvent isPublicEvent = call.isPublicEvent;
    const auto interceptor = std::move(call.interceptor);
    auto outcome = intake_.eventOf(std::move(call));
    if (const auto *refusal = std::get_if<Refusal>(&outcome)) {
        recorder_.raise(*refusal, timestamp);
        return;
    }
    auto &event = std::get<APMEvent>(outcome);
    if (!sessions_.addScreen(event, isPublicEvent, secondsOfUptime))
        return;
    if (interceptor)
        (*interceptor)(event);
    listeners_.notify(event);
    recorder_.handleEvent(std::move(event), isPublicEvent);
}

void MeasurementWorker::logFirstOpenIfDue(Collection collection, double timestamp)
{
    if (isDeactivated_ || collection == Collection::Off || !firstOpen_.takeDue())
        return;
    LogEventCall call;
    call.origin = autoOrigin;
    call.isPublicEvent = IsPublicEvent::No;
    call.name = FirstOpen::eventName;
    call.timestamp = timestamp;
    services_.ledger.count(LedgerEntry::Raised);
    logEvent(std::move(call));
}

void MeasurementWorker::setUserAttribute(UserPropertyCall call)
{
    if (isDeactivated_)
        call.enabled = Collection::Off;
    properties_.setUserAttribute(std::move(call));
}

void MeasurementWorker::setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters,
                                                  Collection collection)
{
    const auto refusal = intake_.setDefaultEventParameters(std::move(parameters));
    if (refusal && collection == Collection::On && !isDeactivated_)
        recorder_.raise(*refusal, services_.clock.secondsSince1970());
}

void MeasurementWorker::setAnalyticsCollectionEnabled(bool choice, Collection collection)
{
    services_.suite.setValue(choice, suiteKeys::analyticsCollection);
    writeLog(services_.monitor, measurementLog::collectionChanged,
             collection == Collection::On ? "true" : "false");
    logFirstOpenIfDue(collection, services_.clock.secondsSince1970());
    sessions_.setCollection(collection);
    if (!isDeactivated_)
        uploads_.setCollection(collection);
}

void MeasurementWorker::resetAnalyticsData(Collection collection)
{
    const auto made = services_.suite.resetAppInstanceID();
    setInstanceID(made);
    if (!made)
        return;
    firstOpen_.makeDue();
    if (isDeactivated_)
        reset_.makePending(); // for the first start that may open the database
    else
        reset_.wipe();
    logFirstOpenIfDue(collection, services_.clock.secondsSince1970());
    sessions_.handleReset();
    uploads_.didReset();
}

void MeasurementWorker::applySettings(const APMRemoteConfig &settings)
{
    services_.settings = settings;
    const MeasurementLimits limits = MeasurementLimits::of(settings);
    databases_.setLimits(limits.store);
    intake_.setLimits(limits.validation);
    recorder_.setLimits(limits);
    properties_.setLimits(limits);
    sessions_.setSettings(settings);
    mostUserProperties_ = limits.publicUserProperties;
}

void MeasurementWorker::tellSessions(const std::function<void(Sessions &)> &what)
{
    if (!isDeactivated_)
        what(sessions_);
}

Result<> MeasurementWorker::checkReadable() const
{
    return isDeactivated_ ? Error{"analytics", 2, "Analytics is deactivated"} : Result<>();
}

Result<std::int64_t> MeasurementWorker::sessionID()
{
    if (const auto readable = checkReadable(); !readable)
        return readable.error();
    if (!sessions_.tellsSessionID())
        return Error{"analytics", 5, "Session ids are switched off"};
    return properties_.sessionID();
}

Result<std::vector<APMUserAttribute>>
MeasurementWorker::userPropertiesIncludingInternal(IncludingInternal includingInternal)
{
    const auto readable = checkReadable();
    return readable ? properties_.userProperties(includingInternal) : readable.error();
}

void MeasurementWorker::didDrain()
{
    journal_.commit();
    uploads_.didDrain();
    const double now = services_.clock.secondsOfUptime();
    if (!hasLogged_ || now < nextLookForStaleData_)
        return;
    nextLookForStaleData_ = now + staleDataLookInterval;
    (void)journal_.deleteStaleDataIfDue(); // which logs why it failed, and is tried again
}

void MeasurementWorker::close()
{
    hasLogged_ = false;
    uploads_.close();
    journal_.close();
}

} // namespace skyflare
