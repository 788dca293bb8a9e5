#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/validation/APMDataTypeValidator.h"
#include "analytics/validation/Refusal.h"
#include "platform/base/PropertyList.h"

#include <optional>
#include <string_view>
#include <vector>

namespace skyflare {

/// A text, which is taken out, or a number as it is recorded; a true or false is the whole number 1 or 0.
/// Nothing for any other kind.
[[nodiscard]] std::optional<APMValue> scalarOf(PropertyList &value);

/// Goes through the parameters that came with an event and keeps those that may be recorded. What is refused
/// goes alone; the others stay, in the order of the dictionary.
///
/// - A true or false counts as the whole number 1 or 0. Bytes and a dictionary of their own are refused.
/// - An array stays only as "items" of an e-commerce event. Within an item a parameter is judged like any
///   other; an array there is refused, and so are custom parameters beyond what the limits allow.
/// - "value" goes unless it is a number and "currency" stands beside it with a currency code.
///
/// Threads: as the validator's. Borrows the monitor, which must outlive it.
class EventParameterFilter {
public:
    struct Filtered {
        APMParameters parameters;
        std::vector<Refusal> refusals; ///< of every part that was; the first is for the error marker
    };

    EventParameterFilter(APMMonitor &monitor, const ValidationLimits &limits)
        : validator_(monitor, limits), log_(monitor), limits_(limits)
    {
    }

    /// @param eventName  valid, as the caller gave it: "screen_view", not "_vs"
    /// @param isPublicEvent  from the app's own code: the stricter rules, and no more than so many parameters
    [[nodiscard]] Filtered filter(std::string_view eventName, IsPublicEvent isPublicEvent,
                                  PropertyList::Dictionary parameters) const;

private:
    class Pass;

    APMDataTypeValidator validator_;
    RefusalLog log_;
    ValidationLimits limits_;
};

} // namespace skyflare
