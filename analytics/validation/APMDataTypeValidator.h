#pragma once

#include "analytics/model/APMFailureCode.h"
#include "analytics/model/APMMonitor.h"
#include "analytics/validation/APMObject.h"
#include "analytics/validation/RefusalLog.h"
#include "analytics/validation/ValidationLimits.h"
#include "platform/base/PropertyList.h"

#include <cstddef>
#include <string_view>

namespace skyflare {

/// What a text or value stands for; it decides about the wording of a refusal.
enum class APMDataType {
    EventName = 0,
    EventOrigin = 1,
    EventParameterName = 2,
    EventParameterValue = 3,
    UserPropertyName = 4,
    UserPropertyValue = 5,
    ScreenParameterValue = 6,
    ConditionalUserPropertyOrigin = 7,
    ConditionalUserPropertyName = 8,
    ConditionalUserPropertyValue = 9,
};

/// "Event name" …; "Object" for any other number.
[[nodiscard]] std::string_view labelOf(APMDataType type);

enum class IsNestedArrayParam { No, Yes };

/// Decides whether the name or value of an event, a parameter, a user property, a screen or an origin may be
/// recorded. A verdict says no for the first rule that is broken, and the monitor hears why.
///
/// Threads: one at a time; every answer depends on its arguments and the limits alone. Made in passing: it is
///     a few words large, and is made anew when the limits change.
/// Borrows the monitor, which must outlive it.
class APMDataTypeValidator {
public:
    APMDataTypeValidator(APMMonitor &monitor, const ValidationLimits &limits) : log_(monitor), limits_(limits)
    {
    }

    // Events. "Internal" are names and values that the engine or another component gives, not the app.
    Verdict isValidPublicEventName(const APMObject &name) const;
    Verdict isValidInternalEventName(const APMObject &name) const;
    Verdict isValidPublicEventParameterName(const APMObject &name) const;
    Verdict isValidInternalEventParameterName(const APMObject &name) const;
    Verdict isValidPublicEventParameterValue(const APMObject &value) const;
    Verdict isValidInternalEventParameterValue(const APMObject &value) const;
    Verdict isValidInternalEventOrigin(const APMObject &origin) const;
    /// One that ends with "+gtm".
    Verdict isValidForwardedEventOrigin(const APMObject &origin) const;

    // User properties, screens.
    Verdict isValidPublicUserAttributeName(const APMObject &name) const;
    Verdict isValidInternalUserAttributeName(const APMObject &name) const;
    Verdict isValidPublicUserAttributeValue(const APMObject &value) const;
    Verdict isValidInternalUserAttributeValue(const APMObject &value, std::string_view name) const;
    Verdict isValidScreenParameterValue(const APMObject &value) const;
    Verdict isValidConditionalUserPropertyOrigin(const APMObject &origin) const;
    Verdict isValidConditionalUserPropertyName(const APMObject &name) const;
    Verdict isValidConditionalUserPropertyValue(const APMObject &value) const;

    // Money and arrays.
    Verdict isValidNumericValue(const APMObject &value) const;
    /// Three letters, in either case.
    Verdict isValidCurrencyCode(const APMObject &code) const;
    Verdict isValidArrayParamForEvent(std::string_view event, std::string_view withParamName,
                                      std::size_t withArrayCount,
                                      IsNestedArrayParam isNestedArrayParam) const;
    Verdict isValidArrayParamItem(const PropertyList &item) const;

    [[nodiscard]] static bool hasReservedPrefixes(std::string_view name);
    /// Whether it is one of a component that hands on what was logged elsewhere: it ends with "+gtm".
    [[nodiscard]] static bool isForwardedEventOrigin(std::string_view origin);

    // The rules that those above are made of. Lengths in code points.
    Verdict isValidString(const APMObject &string, std::size_t minLength, std::size_t maxLength,
                          APMDataType type) const;
    Verdict isValidInternalName(const APMObject &name, std::size_t maxLength, APMDataType type) const;
    Verdict isValidPublicName(const APMObject &name, std::size_t maxLength, APMDataType type) const;
    Verdict isValidValue(const APMObject &value, std::size_t minLength, std::size_t maxLength,
                         APMDataType type) const;

private:
    RefusalLog log_;
    ValidationLimits limits_;

    [[nodiscard]] Verdict refuse(FailureCode failureCode, APMDataType type, const RefusalMessage &message,
                                 RefusalLog::Details details) const;
    [[nodiscard]] Verdict refuseLine(FailureCode failureCode, const RefusalMessage &message,
                                     const RefusalLog::Details &details) const;
};

/// The name of a value's kind in messages: "NSString", "NSNumber", "NSData", "NSArray", "NSDictionary".
[[nodiscard]] std::string_view classNameOf(const PropertyList &value);

} // namespace skyflare
