#pragma once

#include "analytics/model/APMFailureCode.h"
#include "analytics/model/APMValue.h"
#include "analytics/validation/APMObject.h"

#include <cstdint>
#include <optional>
#include <string>

namespace skyflare {

/// Where in the engine something was refused.
enum class CallSite {
    EventName,
    EventOrigin,
    ParameterName,
    ParameterValue,
    ArrayParameter,
    UserPropertyName,
    UserPropertyValue,
    // Limits of how many there may be, and switches. What they refuse is valid in itself.
    ParameterCount,           ///< of one event
    CustomItemParameter,      ///< in an item, where none may be
    CustomItemParameterCount, ///< of one item
    UserPropertyCount,
    EventNameCount,
    PublicEventCount, ///< of one day
};

/// The error code for a failure at that place, as the table in Refusal.cpp has it.
[[nodiscard]] APMErrorCode errorCodeFor(CallSite site, FailureCode failureCode);

/// One thing that was refused: what the error marker says, and what the ledger counts.
///
/// Threads: any; a value.
struct Refusal {
    CallSite site = CallSite::EventName;
    FailureCode failureCode = FailureCode::Valid; ///< Valid where a limit or a switch refuses
    std::string name;                             ///< of the event, parameter or user property
    /// Of the value at fault: code points, or items of an array. Nothing where there is none to count.
    std::optional<std::int64_t> valueLength = {};

    [[nodiscard]] APMErrorCode errorCode() const { return errorCodeFor(site, failureCode); }
    bool operator==(const Refusal &) const = default;
};

/// What stands for a name: the name, "(nil)" where it is missing, the class of anything else.
[[nodiscard]] std::string nameAtFault(const APMObject &name);
/// Of a text its code points, of an array its items. A number has none.
[[nodiscard]] std::optional<std::int64_t> lengthOf(const APMValue &value);

} // namespace skyflare
