#pragma once

#include "analytics/model/APMMonitor.h"
#include "analytics/validation/APMObject.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace skyflare {

/// A console text and its number. "%d" stands for a limit; behind a text that names a value comes that value.
struct RefusalMessage {
    int code = 0;
    std::string_view text;
};

namespace messages {

// Behind the label of what is at fault.
inline constexpr RefusalMessage missing{13001, " is required and can't be nil"};
inline constexpr RefusalMessage notString{13000, " must be of type NSString"};
inline constexpr RefusalMessage emptyString{13001, " is required and can't be empty"};
inline constexpr RefusalMessage tooLong{13000, " is too long. The maximum supported length is %d"};
inline constexpr RefusalMessage tooShort{13000, " is too short. The minimum supported length is %d"};
inline constexpr RefusalMessage withoutSuffix{13000, " must end with \"+gtm\""};
inline constexpr RefusalMessage illegalCharacter{13002,
                                                 " must contain only letters, numbers, or underscores"};
inline constexpr RefusalMessage notStartingWithLetter{13003, " must start with a letter"};
inline constexpr RefusalMessage nilValue{13004, " cannot be nil"};
// Deliberate: "a"; whoever searches logs for this line knows it so.
inline constexpr RefusalMessage notValue{13005, " must be a APMValue instance. value"};
inline constexpr RefusalMessage notNumeric{13011, " must be specified with a numeric type. value"};
inline constexpr RefusalMessage badCurrency{13012, " must contain a %d-letter ISO_4217 currency code. value"};
inline constexpr RefusalMessage wrongArrayName{
    13013, " is an invalid ecommerce items. The name of array parameters for ecommerce should be"
           " \"items\". Invalid parameter name"};

// Whole lines.
inline constexpr RefusalMessage reservedEvent{13006, "Event name is reserved. Ignoring event"};
inline constexpr RefusalMessage prefixedEvent{13007, "Event name uses reserved prefix. Ignoring event"};
inline constexpr RefusalMessage prefixedParameter{13008,
                                                  "Parameter name uses reserved prefix. Ignoring parameter"};
inline constexpr RefusalMessage reservedProperty{13009,
                                                 "User property name is reserved. Ignoring user property"};
inline constexpr RefusalMessage prefixedProperty{
    13010, "User property name uses reserved prefix. Ignoring user property"};
inline constexpr RefusalMessage nestedArray{13013, "Nested array parameters are not allowed. Name"};
inline constexpr RefusalMessage arrayOnOtherEvent{
    13013, "Only ecommerce events are allowed to contain array parameters. Invalid ecommerce name"};
inline constexpr RefusalMessage tooManyItems{
    13013, "Array parameter has too many items. The maximum number of supported items is %d. Invalid array"
           " size"};
inline constexpr RefusalMessage itemNotDictionary{13014,
                                                  "Array parameter item must be of type NSDictionary. Type"};
inline constexpr RefusalMessage unsupportedType{
    13015, "Event parameter value must be of type NSString, NSNumber or NSArray. Type"};
inline constexpr RefusalMessage tooManyParameters{13016, "Event cannot contain more than %d parameters"};
inline constexpr RefusalMessage customItemParameter{13017, "Item cannot contain custom parameters"};
inline constexpr RefusalMessage tooManyCustomItemParameters{
    13018, "Item cannot contain more than %d custom parameters"};
inline constexpr RefusalMessage valueDiscarded{
    13019, "Value parameter discarded. You must also supply a 3-letter ISO_4217 currency code in the currency"
           " parameter."};
inline constexpr RefusalMessage noBuffer{18000, "Failed to malloc bytes for trimming. Bytes"};
inline constexpr RefusalMessage noTrimmedString{18001, "Trimmed UTF32 string was nil"};

} // namespace messages

/// What stands for a name or value behind a text: in one line of UTF-8, cut, with quotation marks around it
/// if it is a text.
[[nodiscard]] std::string described(const APMObject &object);

/// Writes refusals to the engine's log, one line each, whatever bytes the name or value at fault has.
///
/// Threads: as the monitor, which it borrows.
class RefusalLog {
public:
    struct Details {
        std::string_view label = {}; ///< before the text
        std::optional<std::size_t> number = {};
        std::optional<APMObject> value = {}; ///< after the text
    };

    explicit RefusalLog(APMMonitor &monitor) : monitor_(&monitor) {}

    void write(APMMonitor::Level level, const RefusalMessage &message, const Details &details) const;
    void write(APMMonitor::Level level, const RefusalMessage &message) const { write(level, message, {}); }

private:
    APMMonitor *monitor_;
};

} // namespace skyflare
