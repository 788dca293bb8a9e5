#pragma once

#include "analytics/pipeline/APMOperationQueue.h"
#include "analytics/pipeline/WorkerTurns.h"
#include "analytics/worker/MeasurementWorker.h"

namespace skyflare {

inline constexpr const char *apmWorkerQueueLabel = "APMMeasurement";

/// The engine itself, a thin face over MeasurementWorker: takes what comes from the facade queue over to the
/// engine's worker queue.
///
/// The worker's operations run in a row: a transaction takes what is waiting, and ends when nothing is.
///
/// Threads: any. Borrows its services; what runs on the worker borrows this, which goes after the closing has
///     reported, or after the queue has been closed.
class APMMeasurement final : private WorkerTurns {
public:
    explicit APMMeasurement(const MeasurementServices &services);

    void start(const APMAnalyticsOptions &options, Collection collection, double startedAt);
    /// Nothing until it has started, and where none could be made.
    [[nodiscard]] std::optional<std::string> appInstanceID() const { return work_.appInstanceID(); }
    [[nodiscard]] std::int64_t mostUserProperties() const { return work_.mostUserProperties(); }

    // logEventWithOrigin:isPublicEvent:name:parameters:timestamp:enabled:ignoreEnabled:ignoreInterceptor:
    // interceptor:addedScreenParameters:
    /// One that has its timestamp.
    void logEventWithOrigin(LogEventCall call);
    // setUserAttribute:
    void setUserAttribute(UserPropertyCall call);
    void setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters, Collection collection);
    void setAnalyticsCollectionEnabled(bool choice, Collection collection);
    void setSessionTimeoutInterval(double seconds);
    void resetAnalyticsData(Collection collection);
    void tellSessions(std::function<void(Sessions &)> what);
    void didBecomeActive();

    // The answers are given on the worker.

    void sessionID(std::function<void(const Result<std::int64_t> &)> completion);
    void userPropertiesIncludingInternal(
        IncludingInternal includingInternal,
        std::function<void(const Result<std::vector<APMUserAttribute>> &)> callback);

    void addLogEventListener(LogEventListenerToken token, LogEventListener listener);
    void removeLogEventListener(LogEventListenerToken token);
    void notifyEventListeners(APMEvent event);

    /// Accepts nothing more. What was accepted is stored and the database closed, and then, when nothing here
    /// is in use any more, `closed` runs on the worker.
    void closeThen(std::function<void()> closed);
    /// Accepts nothing more, and drops what has not begun; what is in hand is still stored, and the database
    /// closed. @return how many events were dropped
    std::size_t discard();

private:
    EventLedger &ledger_;
    MeasurementWorker work_;
    std::shared_ptr<SerialQueue> queue_;
    std::shared_ptr<APMOperationQueue> operations_; ///< timers that outlive this look for it

    template <typename Operation> void ask(Operation operation);

    // For the worker's own parts
    void perform(Work work) override;
    void performAfter(std::chrono::nanoseconds delay, Work work) override;
    [[nodiscard]] DispatchQueue &queue() override { return *queue_; }
};

} // namespace skyflare
