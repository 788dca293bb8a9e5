#include "analytics/APMMeasurement.h"

#include <utility>

namespace skyflare {

APMMeasurement::APMMeasurement(const MeasurementServices &services)
    : ledger_(services.ledger),
      work_(services, *this),
      queue_(services.queues.makeSerialQueue(apmWorkerQueueLabel)),
      operations_(std::make_shared<APMOperationQueue>(
          queue_, APMOperationQueue::Hooks{[this] { work_.didWork(); }, [this] { work_.didDrain(); }}))
{
    if (services.prepareThread)
        queue_->async(services.prepareThread);
    operations_->resume();
}

/// @param operation  void(MeasurementWorker &); dropped after the end: there is nothing left that it could
/// change
template <typename Operation> void APMMeasurement::ask(Operation operation)
{
    (void)operations_->addOperation([this, operation = std::move(operation)]() mutable { operation(work_); },
                                    APMOperationQueue::Counted::No);
}

void APMMeasurement::perform(Work work)
{
    (void)operations_->addOperation(std::move(work), APMOperationQueue::Counted::No);
}

void APMMeasurement::performAfter(std::chrono::nanoseconds delay, Work work)
{
    queue_->asyncAfter(delay, [operations = std::weak_ptr(operations_), work = std::move(work)]() mutable {
        if (const auto open = operations.lock())
            (void)open->addOperation(std::move(work), APMOperationQueue::Counted::No);
    });
}

void APMMeasurement::start(const APMAnalyticsOptions &options, Collection collection, double startedAt)
{
    ask([options, collection, startedAt](MeasurementWorker &work) {
        work.start(options, collection, startedAt);
    });
}

void APMMeasurement::logEventWithOrigin(LogEventCall call)
{
    if (!operations_->addOperation(
            [this, call = std::move(call)]() mutable { work_.logEvent(std::move(call)); }))
        ledger_.count(LedgerEntry::Abandoned);
}

void APMMeasurement::setUserAttribute(UserPropertyCall call)
{
    ask([call = std::move(call)](MeasurementWorker &work) mutable {
        work.setUserAttribute(std::move(call));
    });
}

void APMMeasurement::setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters,
                                               Collection collection)
{
    ask([parameters = std::move(parameters), collection](MeasurementWorker &work) mutable {
        work.setDefaultEventParameters(std::move(parameters), collection);
    });
}

void APMMeasurement::setAnalyticsCollectionEnabled(bool choice, Collection collection)
{
    ask([choice, collection](MeasurementWorker &work) {
        work.setAnalyticsCollectionEnabled(choice, collection);
    });
}

void APMMeasurement::setSessionTimeoutInterval(double seconds)
{
    ask([seconds](MeasurementWorker &work) { work.setSessionTimeoutInterval(seconds); });
}

void APMMeasurement::resetAnalyticsData(Collection collection)
{
    ask([collection](MeasurementWorker &work) { work.resetAnalyticsData(collection); });
}

void APMMeasurement::tellSessions(std::function<void(Sessions &)> what)
{
    ask([what = std::move(what)](MeasurementWorker &work) { work.tellSessions(what); });
}

void APMMeasurement::didBecomeActive()
{
    ask([](MeasurementWorker &work) { work.didBecomeActive(); });
}

void APMMeasurement::sessionID(std::function<void(const Result<std::int64_t> &)> completion)
{
    ask([completion = std::move(completion)](MeasurementWorker &work) { completion(work.sessionID()); });
}

void APMMeasurement::userPropertiesIncludingInternal(
    IncludingInternal includingInternal,
    std::function<void(const Result<std::vector<APMUserAttribute>> &)> callback)
{
    ask([includingInternal, callback = std::move(callback)](MeasurementWorker &work) {
        callback(work.userPropertiesIncludingInternal(includingInternal));
    });
}

void APMMeasurement::addLogEventListener(LogEventListenerToken token, LogEventListener listener)
{
    ask([token, listener = std::move(listener)](MeasurementWorker &work) mutable {
        work.listeners().add(token, std::move(listener));
    });
}

void APMMeasurement::removeLogEventListener(LogEventListenerToken token)
{
    ask([token](MeasurementWorker &work) { work.listeners().remove(token); });
}

void APMMeasurement::notifyEventListeners(APMEvent event)
{
    ask([event = std::move(event)](MeasurementWorker &work) { work.listeners().notify(event); });
}

void APMMeasurement::closeThen(std::function<void()> closed)
{
    (void)operations_->closeThen([this, closed = std::move(closed)]() mutable {
        work_.close();
        queue_->async(std::move(closed)); // behind the turn that this is part of
    });
}

std::size_t APMMeasurement::discard()
{
    const std::size_t dropped = operations_->discard();
    queue_->async([this] { work_.close(); });
    return dropped;
}

} // namespace skyflare
