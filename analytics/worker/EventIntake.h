#pragma once

#include "analytics/pipeline/EventLedger.h"
#include "analytics/validation/EventParameterFilter.h"
#include "analytics/worker/LogEventCall.h"

#include <optional>
#include <variant>

namespace skyflare {

/// Makes of a call the event that is to be recorded, or says why there is none. What is refused, a part or
/// the whole, is counted, and the event carries the marker of the first part.
///
/// Threads: the engine's worker. Borrows monitor and ledger.
class EventIntake {
public:
    EventIntake(APMMonitor &monitor, EventLedger &ledger, const ValidationLimits &limits)
        : monitor_(monitor), ledger_(ledger), validator_(monitor, limits), filter_(monitor, limits)
    {
    }

    /// They hold from the next event on.
    void setLimits(const ValidationLimits &limits);

    /// By the name that the caller gave it: "screen_view". The refusal is of the whole event.
    [[nodiscard]] std::variant<APMEvent, Refusal> eventOf(LogEventCall call) const;

    // setDefaultEventParameters:
    /// Judged once, now, by the public rules, and as part of no particular event: so there is no array.
    /// @return the first of those that are refused
    std::optional<Refusal> setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters);

private:
    APMMonitor &monitor_;
    EventLedger &ledger_;
    APMDataTypeValidator validator_;
    EventParameterFilter filter_;
    APMParameters defaults_;

    [[nodiscard]] std::optional<Refusal> judge(const LogEventCall &call) const;
    void addDefaults(APMParameters &parameters) const;
    void addScreenParameters(APMParameters &parameters, APMParameters added) const;
    void refusePart(const Refusal &refusal) const;
};

} // namespace skyflare
