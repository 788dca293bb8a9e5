#pragma once

#include "analytics/validation/Refusal.h"
#include "analytics/worker/DailyLimits.h"
#include "analytics/worker/EventJournal.h"
#include "analytics/worker/MeasurementConfig.h"
#include "analytics/worker/MeasurementLimits.h"

#include <functional>

namespace skyflare {

/// Decides whether an event is kept, and writes it: the day's limits, the limit of names, what is real-time.
///
/// Threads: the engine's worker. Borrows its Services.
class EventRecorder {
public:
    struct Services {
        EventJournal &journal;
        APMMonitor &monitor;
        const Clock &clock;
        EventLedger &ledger;
        MeasurementConfig &config;
    };
    /// Where other parts of the engine join in; empty: nothing is done there.
    struct Hooks {
        std::function<void(APMEvent &)> processSessionFromEvent; ///< before it is decided about
        std::function<void()> updateSchedule;                    ///< after it was written
    };

    /// @param timeZoneOffsetMinutes  of the account
    EventRecorder(const Services &services, const MeasurementLimits &limits, double timeZoneOffsetMinutes,
                  DebugMode debugMode, Hooks hooks);

    /// They hold from the next event on; the hour at which a day begins stays as it was kept.
    void setLimits(const MeasurementLimits &limits) { limits_ = limits; }

    // handleEventOnWorkerQueue:, handleInternalEventOnWorkerQueue:
    /// Takes a valid event to its end, which the ledger counts. One of the app's that is over a limit makes
    /// an error event.
    void handleEvent(APMEvent event, IsPublicEvent isPublicEvent);

    /// Records the engine's own event "_err", for what cannot carry the marker itself. It makes no other.
    void raise(const Refusal &refusal, double timestamp);

private:
    Services services_;
    MeasurementLimits limits_;
    double timeZoneOffsetMinutes_;
    DebugMode debugMode_;
    Hooks hooks_;
    std::optional<double> midnightOffset_; ///< nothing: not asked for yet
    std::uint64_t namesDropped_ = 0;       ///< events, in this process

    [[nodiscard]] bool isWithinDay(const APMEvent &event, IsPublicEvent isPublicEvent);
    [[nodiscard]] bool isWithinNames(const APMEvent &event, IsPublicEvent isPublicEvent);
    APMDailyCounts &countsOfToday();
    void report(const LimitDecision &decision, const APMEvent &event);
};

} // namespace skyflare
