#include "analytics/validation/APMDataTypeValidator.h"

#include "analytics/validation/CodePoints.h"
#include "analytics/validation/ReservedNames.h"

#include <algorithm>
#include <array>

namespace skyflare {

namespace {

constexpr std::array<std::string_view, 10> labels{
    "Event name",
    "Event origin",
    "Event parameter name",
    "Event parameter value",
    "User property name",
    "User property value",
    "Screen parameter value",
    "Conditional user property origin",
    "Conditional user property name",
    "Conditional user property value",
};

/// The engine's own properties that may be longer than the others.
struct LongProperty {
    std::string_view name;
    std::size_t maxLength;
};
constexpr std::array<LongProperty, 3> longProperties{{{"_id", 256}, {"_gbraid", 256}, {"_psmvalue", 512}}};

constexpr std::string_view forwardedSuffix = "+gtm";
constexpr std::size_t currencyLetters = 3;

bool isValueOfParameterOrProperty(APMDataType type)
{
    return type == APMDataType::EventParameterValue || type == APMDataType::UserPropertyValue;
}

} // namespace

std::string_view labelOf(APMDataType type)
{
    const auto index = static_cast<std::size_t>(type);
    return index < labels.size() ? labels.at(index) : "Object";
}

std::string_view classNameOf(const PropertyList &value)
{
    struct ClassName {
        std::string_view operator()(bool) const { return "NSNumber"; }
        std::string_view operator()(std::int64_t) const { return "NSNumber"; }
        std::string_view operator()(double) const { return "NSNumber"; }
        std::string_view operator()(const std::string &) const { return "NSString"; }
        std::string_view operator()(const Bytes &) const { return "NSData"; }
        std::string_view operator()(const PropertyList::Array &) const { return "NSArray"; }
        std::string_view operator()(const PropertyList::Dictionary &) const { return "NSDictionary"; }
    };
    return std::visit(ClassName{}, value.value());
}

Verdict APMDataTypeValidator::refuse(FailureCode failureCode, APMDataType type, const RefusalMessage &message,
                                     RefusalLog::Details details) const
{
    using Level = APMMonitor::Level;
    details.label = labelOf(type);
    log_.write(isValueOfParameterOrProperty(type) ? Level::Warning : Level::Error, message, details);
    return {failureCode};
}

Verdict APMDataTypeValidator::refuseLine(FailureCode failureCode, const RefusalMessage &message,
                                         const RefusalLog::Details &details) const
{
    log_.write(APMMonitor::Level::Error, message, details);
    return {failureCode};
}

Verdict APMDataTypeValidator::isValidString(const APMObject &string, std::size_t minLength,
                                            std::size_t maxLength, APMDataType type) const
{
    if (string.isNil())
        return refuse(FailureCode::Missing, type, messages::missing, {});
    const std::string_view *text = string.text();
    if (!text)
        return refuse(FailureCode::WrongType, type, messages::notString, {.value = string});
    if (text->empty() && minLength >= 1) {
        // Deliberate: apps clear a value by setting it to nothing, and that is worth no line.
        if (isValueOfParameterOrProperty(type))
            return {FailureCode::Missing};
        return refuse(FailureCode::Missing, type, messages::emptyString, {});
    }
    if (codePoints::isLongerThan(*text, maxLength))
        return refuse(FailureCode::TooLong, type, messages::tooLong, {.number = maxLength, .value = string});
    // What is not empty has one code point at least.
    if (minLength > 1 && !codePoints::isLongerThan(*text, minLength - 1))
        return refuse(FailureCode::TooShort, type, messages::tooShort,
                      {.number = minLength, .value = string});
    return {};
}

Verdict APMDataTypeValidator::isValidInternalName(const APMObject &name, std::size_t maxLength,
                                                  APMDataType type) const
{
    if (const Verdict verdict = isValidString(name, 1, maxLength, type); !verdict)
        return verdict;
    if (!codePoints::shapeOf(*name.text()).hasNameCharactersOnly)
        return refuse(FailureCode::IllegalCharacters, type, messages::illegalCharacter, {.value = name});
    return {};
}

Verdict APMDataTypeValidator::isValidPublicName(const APMObject &name, std::size_t maxLength,
                                                APMDataType type) const
{
    if (const Verdict verdict = isValidString(name, 1, maxLength, type); !verdict)
        return verdict;
    const codePoints::NameShape shape = codePoints::shapeOf(*name.text());
    if (!shape.hasNameCharactersOnly)
        return refuse(FailureCode::IllegalCharacters, type, messages::illegalCharacter, {.value = name});
    if (!shape.startsWithLetter)
        return refuse(FailureCode::IllegalCharacters, type, messages::notStartingWithLetter, {.value = name});
    return {};
}

Verdict APMDataTypeValidator::isValidValue(const APMObject &value, std::size_t minLength,
                                           std::size_t maxLength, APMDataType type) const
{
    if (value.isNil())
        return refuse(FailureCode::Missing, type, messages::nilValue, {});
    if (!value.value())
        return refuse(FailureCode::WrongType, type, messages::notValue, {.value = value});
    if (const std::string *text = value.value()->text())
        return isValidString(*text, minLength, maxLength, type);
    return {};
}

Verdict APMDataTypeValidator::isValidPublicEventName(const APMObject &name) const
{
    if (const Verdict verdict = isValidPublicName(name, longestEventName, APMDataType::EventName); !verdict)
        return verdict;
    const std::string_view text = *name.text();
    if (text == screenViewEvent)
        return {};
    const bool isLoggable = std::ranges::find(loggableReservedEvents, text) != loggableReservedEvents.end();
    if (isReservedEventName(text) && !isLoggable)
        return refuseLine(FailureCode::Reserved, messages::reservedEvent, {.value = name});
    if (hasReservedPrefixes(text))
        return refuseLine(FailureCode::Reserved, messages::prefixedEvent, {.value = name});
    return {};
}

Verdict APMDataTypeValidator::isValidInternalEventName(const APMObject &name) const
{
    return isValidInternalName(name, longestEventName, APMDataType::EventName);
}

Verdict APMDataTypeValidator::isValidPublicEventParameterName(const APMObject &name) const
{
    if (const Verdict verdict =
            isValidPublicName(name, longestParameterName, APMDataType::EventParameterName);
        !verdict)
        return verdict;
    if (hasReservedPrefixes(*name.text()))
        return refuseLine(FailureCode::Reserved, messages::prefixedParameter, {.value = name});
    return {};
}

Verdict APMDataTypeValidator::isValidInternalEventParameterName(const APMObject &name) const
{
    return isValidInternalName(name, longestParameterName, APMDataType::EventParameterName);
}

Verdict APMDataTypeValidator::isValidPublicEventParameterValue(const APMObject &value) const
{
    return isValidValue(value, 0, limits_.publicValueLength, APMDataType::EventParameterValue);
}

Verdict APMDataTypeValidator::isValidInternalEventParameterValue(const APMObject &value) const
{
    return isValidValue(value, 0, std::max(limits_.publicValueLength, longestInternalValue),
                        APMDataType::EventParameterValue);
}

Verdict APMDataTypeValidator::isValidInternalEventOrigin(const APMObject &origin) const
{
    return isValidInternalName(origin, longestOrigin, APMDataType::EventOrigin);
}

Verdict APMDataTypeValidator::isValidForwardedEventOrigin(const APMObject &origin) const
{
    const std::string_view *text = origin.text();
    if (!text || text->empty())
        return isValidInternalEventOrigin(origin); // which refuses it
    if (!isForwardedEventOrigin(*text))
        return refuse(FailureCode::NotForwarded, APMDataType::EventOrigin, messages::withoutSuffix,
                      {.value = origin});
    return isValidInternalEventOrigin(text->substr(0, text->size() - forwardedSuffix.size()));
}

Verdict APMDataTypeValidator::isValidPublicUserAttributeName(const APMObject &name) const
{
    if (const Verdict verdict =
            isValidPublicName(name, longestUserPropertyName, APMDataType::UserPropertyName);
        !verdict)
        return verdict;
    if (isReservedUserProperty(*name.text()))
        return refuseLine(FailureCode::Reserved, messages::reservedProperty, {.value = name});
    if (hasReservedPrefixes(*name.text()))
        return refuseLine(FailureCode::Reserved, messages::prefixedProperty, {.value = name});
    return {};
}

Verdict APMDataTypeValidator::isValidInternalUserAttributeName(const APMObject &name) const
{
    return isValidInternalName(name, longestUserPropertyName, APMDataType::UserPropertyName);
}

Verdict APMDataTypeValidator::isValidPublicUserAttributeValue(const APMObject &value) const
{
    return isValidValue(value, 1, longestUserPropertyValue, APMDataType::UserPropertyValue);
}

Verdict APMDataTypeValidator::isValidInternalUserAttributeValue(const APMObject &value,
                                                                std::string_view name) const
{
    const auto found = std::ranges::find(longProperties, name, &LongProperty::name);
    const std::size_t maxLength = found == longProperties.end() ? longestUserPropertyValue : found->maxLength;
    return isValidValue(value, 1, maxLength, APMDataType::UserPropertyValue);
}

Verdict APMDataTypeValidator::isValidScreenParameterValue(const APMObject &value) const
{
    return isValidString(value, 1, limits_.publicValueLength, APMDataType::ScreenParameterValue);
}

Verdict APMDataTypeValidator::isValidConditionalUserPropertyOrigin(const APMObject &origin) const
{
    return isValidInternalName(origin, longestOrigin, APMDataType::ConditionalUserPropertyOrigin);
}

Verdict APMDataTypeValidator::isValidConditionalUserPropertyName(const APMObject &name) const
{
    return isValidInternalName(name, longestUserPropertyName, APMDataType::ConditionalUserPropertyName);
}

Verdict APMDataTypeValidator::isValidConditionalUserPropertyValue(const APMObject &value) const
{
    return isValidValue(value, 1, longestUserPropertyValue, APMDataType::ConditionalUserPropertyValue);
}

Verdict APMDataTypeValidator::isValidNumericValue(const APMObject &value) const
{
    if (value.value() && (value.value()->integer() || value.value()->real()))
        return {};
    return refuse(FailureCode::NotNumeric, APMDataType::EventParameterValue, messages::notNumeric,
                  {.value = value});
}

Verdict APMDataTypeValidator::isValidCurrencyCode(const APMObject &code) const
{
    const std::string *held = code.value() ? code.value()->text() : nullptr;
    const std::optional<std::string_view> text = held          ? std::optional<std::string_view>(*held)
                                                 : code.text() ? std::optional(*code.text())
                                                               : std::nullopt;
    if (text && codePoints::areLetters(*text, currencyLetters))
        return {};
    return refuse(FailureCode::BadCurrencyCode, APMDataType::EventParameterValue, messages::badCurrency,
                  {.number = currencyLetters, .value = code});
}

Verdict APMDataTypeValidator::isValidArrayParamForEvent(std::string_view event,
                                                        std::string_view withParamName,
                                                        std::size_t withArrayCount,
                                                        IsNestedArrayParam isNestedArrayParam) const
{
    if (isNestedArrayParam == IsNestedArrayParam::Yes)
        return refuseLine(FailureCode::NestedArray, messages::nestedArray, {.value = withParamName});
    if (!isEcommerceEvent(event))
        return refuseLine(FailureCode::ArrayNotAllowed, messages::arrayOnOtherEvent, {.value = event});
    if (withParamName != itemsParameter)
        return refuse(FailureCode::ArrayName, APMDataType::EventParameterName, messages::wrongArrayName,
                      {.value = withParamName});
    if (withArrayCount > mostArrayItems) {
        const APMValue count(static_cast<std::int64_t>(withArrayCount));
        return refuseLine(FailureCode::TooManyItems, messages::tooManyItems,
                          {.number = mostArrayItems, .value = count});
    }
    return {};
}

Verdict APMDataTypeValidator::isValidArrayParamItem(const PropertyList &item) const
{
    if (item.as<PropertyList::Dictionary>())
        return {};
    return refuseLine(FailureCode::ItemNotDictionary, messages::itemNotDictionary,
                      {.value = APMObject::Other{classNameOf(item)}});
}

bool APMDataTypeValidator::hasReservedPrefixes(std::string_view name)
{
    return std::ranges::any_of(reservedPrefixes,
                               [&](std::string_view prefix) { return name.starts_with(prefix); });
}

bool APMDataTypeValidator::isForwardedEventOrigin(std::string_view origin)
{
    return origin.ends_with(forwardedSuffix);
}

} // namespace skyflare
