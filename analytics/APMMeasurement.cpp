#include "analytics/APMMeasurement.h"

#include <utility>

namespace skyflare {

APMMeasurement::APMMeasurement(const MeasurementServices &services)
    : ledger_(services.ledger),
      work_(services),
      queue_(services.queues.makeSerialQueue(apmWorkerQueueLabel)),
      operations_(queue_, {[this] { work_.didWork(); }, [this] { work_.didDrain(); }})
{
    if (services.prepareThread)
        queue_->async(services.prepareThread);
    operations_.resume();
}

/// @param operation  void(MeasurementWorker &); dropped after the end: there is nothing left that it could
/// change
template <typename Operation> void APMMeasurement::perform(Operation operation)
{
    (void)operations_.addOperation([this, operation = std::move(operation)]() mutable { operation(work_); },
                                   APMOperationQueue::Counted::No);
}

void APMMeasurement::start(const APMAnalyticsOptions &options, Collection collection)
{
    perform([options, collection](MeasurementWorker &work) { work.start(options, collection); });
}

void APMMeasurement::logEventWithOrigin(LogEventCall call)
{
    if (!operations_.addOperation(
            [this, call = std::move(call)]() mutable { work_.logEvent(std::move(call)); }))
        ledger_.count(LedgerEntry::Abandoned);
}

void APMMeasurement::setUserAttribute(UserPropertyCall call)
{
    perform([call = std::move(call)](MeasurementWorker &work) mutable {
        work.setUserAttribute(std::move(call));
    });
}

void APMMeasurement::setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters,
                                               Collection collection)
{
    perform([parameters = std::move(parameters), collection](MeasurementWorker &work) mutable {
        work.setDefaultEventParameters(std::move(parameters), collection);
    });
}

void APMMeasurement::setAnalyticsCollectionEnabled(bool choice, Collection collection)
{
    perform([choice, collection](MeasurementWorker &work) {
        work.setAnalyticsCollectionEnabled(choice, collection);
    });
}

void APMMeasurement::setSessionTimeoutInterval(double seconds)
{
    perform([seconds](MeasurementWorker &work) { work.setSessionTimeoutInterval(seconds); });
}

void APMMeasurement::resetAnalyticsData(Collection collection)
{
    perform([collection](MeasurementWorker &work) { work.resetAnalyticsData(collection); });
}

void APMMeasurement::sessionID(std::function<void(const Result<std::int64_t> &)> completion)
{
    perform([completion = std::move(completion)](MeasurementWorker &work) { completion(work.sessionID()); });
}

void APMMeasurement::userPropertiesIncludingInternal(
    IncludingInternal includingInternal,
    std::function<void(const Result<std::vector<APMUserAttribute>> &)> callback)
{
    perform([includingInternal, callback = std::move(callback)](MeasurementWorker &work) {
        callback(work.userPropertiesIncludingInternal(includingInternal));
    });
}

void APMMeasurement::addLogEventListener(LogEventListenerToken token, LogEventListener listener)
{
    perform([token, listener = std::move(listener)](MeasurementWorker &work) mutable {
        work.listeners().add(token, std::move(listener));
    });
}

void APMMeasurement::removeLogEventListener(LogEventListenerToken token)
{
    perform([token](MeasurementWorker &work) { work.listeners().remove(token); });
}

void APMMeasurement::notifyEventListeners(APMEvent event)
{
    perform([event = std::move(event)](MeasurementWorker &work) { work.listeners().notify(event); });
}

void APMMeasurement::closeThen(std::function<void()> closed)
{
    (void)operations_.closeThen([this, closed = std::move(closed)]() mutable {
        work_.close();
        queue_->async(std::move(closed)); // behind the turn that this is part of
    });
}

std::size_t APMMeasurement::discard()
{
    const std::size_t dropped = operations_.discard();
    queue_->async([this] { work_.close(); });
    return dropped;
}

} // namespace skyflare
