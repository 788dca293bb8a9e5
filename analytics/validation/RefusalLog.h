#pragma once

#include "analytics/model/APMMonitor.h"
#include "analytics/validation/APMObject.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace skyflare {

/// A console text and its number. "%d" stands for a limit; behind a text that names a value comes that value.
struct Message {
    int code = 0;
    std::string_view text;
};

namespace messages {

// Behind the label of what is at fault.
inline constexpr Message missing{13001, " is required and can't be nil"};
inline constexpr Message notString{13000, " must be of type NSString"};
inline constexpr Message emptyString{13001, " is required and can't be empty"};
inline constexpr Message tooLong{13000, " is too long. The maximum supported length is %d"};
inline constexpr Message tooShort{13000, " is too short. The minimum supported length is %d"};
inline constexpr Message withoutSuffix{13000, " must end with \"+gtm\""};
inline constexpr Message illegalCharacter{13002, " must contain only letters, numbers, or underscores"};
inline constexpr Message notStartingWithLetter{13003, " must start with a letter"};
inline constexpr Message nilValue{13004, " cannot be nil"};
// Deliberate: "a"; whoever searches logs for this line knows it so.
inline constexpr Message notValue{13005, " must be a APMValue instance. value"};
inline constexpr Message notNumeric{13011, " must be specified with a numeric type. value"};
inline constexpr Message badCurrency{13012, " must contain a %d-letter ISO_4217 currency code. value"};
inline constexpr Message wrongArrayName{
    13013, " is an invalid ecommerce items. The name of array parameters for ecommerce should be"
           " \"items\". Invalid parameter name"};

// Whole lines.
inline constexpr Message reservedEvent{13006, "Event name is reserved. Ignoring event"};
inline constexpr Message prefixedEvent{13007, "Event name uses reserved prefix. Ignoring event"};
inline constexpr Message prefixedParameter{13008, "Parameter name uses reserved prefix. Ignoring parameter"};
inline constexpr Message reservedProperty{13009, "User property name is reserved. Ignoring user property"};
inline constexpr Message prefixedProperty{13010,
                                          "User property name uses reserved prefix. Ignoring user property"};
inline constexpr Message nestedArray{13013, "Nested array parameters are not allowed. Name"};
inline constexpr Message arrayOnOtherEvent{
    13013, "Only ecommerce events are allowed to contain array parameters. Invalid ecommerce name"};
inline constexpr Message tooManyItems{
    13013, "Array parameter has too many items. The maximum number of supported items is %d. Invalid array"
           " size"};
inline constexpr Message itemNotDictionary{13014, "Array parameter item must be of type NSDictionary. Type"};
inline constexpr Message unsupportedType{
    13015, "Event parameter value must be of type NSString, NSNumber or NSArray. Type"};
inline constexpr Message tooManyParameters{13016, "Event cannot contain more than %d parameters"};
inline constexpr Message customItemParameter{13017, "Item cannot contain custom parameters"};
inline constexpr Message tooManyCustomItemParameters{13018,
                                                     "Item cannot contain more than %d custom parameters"};
inline constexpr Message valueDiscarded{
    13019, "Value parameter discarded. You must also supply a 3-letter ISO_4217 currency code in the currency"
           " parameter."};
inline constexpr Message noBuffer{18000, "Failed to malloc bytes for trimming. Bytes"};
inline constexpr Message noTrimmedString{18001, "Trimmed UTF32 string was nil"};

} // namespace messages

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

    void write(APMMonitor::Level level, const Message &message, const Details &details) const;
    void write(APMMonitor::Level level, const Message &message) const { write(level, message, {}); }

private:
    APMMonitor *monitor_;
};

} // namespace skyflare
