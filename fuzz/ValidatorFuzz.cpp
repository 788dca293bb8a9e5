// Any bytes as names and values.
#include "analytics/validation/APMDataTypeValidator.h"
#include "analytics/validation/CodePoints.h"
#include "analytics/validation/ErrorMarker.h"
#include "analytics/validation/EventParameterFilter.h"
#include "analytics/validation/ReservedNames.h"
#include "fuzz/Checks.h"
#include "fuzz/Input.h"

#include <algorithm>

using namespace skyflare;

namespace {

/// Of well-formed text; in another way than the program counts.
std::size_t leadBytes(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

void checkNames(const APMDataTypeValidator &validator, const std::string &name)
{
    const bool isEvent = static_cast<bool>(validator.isValidPublicEventName(name));
    const bool isParameter = static_cast<bool>(validator.isValidPublicEventParameterName(name));
    const bool isProperty = static_cast<bool>(validator.isValidPublicUserAttributeName(name));
    if (isEvent || isParameter) {
        require(!name.empty() && leadBytes(name) <= 40, "a valid name has 1 to 40 code points");
        require(validUtf8(name) == name, "a valid name is UTF-8");
        require(name[0] != '_' && !(name[0] >= '0' && name[0] <= '9'), "a valid name starts with a letter");
    }
    if (isEvent)
        require(static_cast<bool>(validator.isValidInternalEventName(name)), "public names pass internally");
    if (isParameter || isProperty)
        require(!APMDataTypeValidator::hasReservedPrefixes(name), "a valid name has no reserved prefix");
    if (isProperty)
        require(leadBytes(name) <= 24, "a valid property name has 24 code points at most");
    if (validator.isValidForwardedEventOrigin(name))
        require(name.size() > 4 && leadBytes(name) <= 36, "a forwarded origin has a name before its suffix");
    if (validator.isValidCurrencyCode(name))
        require(leadBytes(name) == 3 && validUtf8(name) == name, "a currency code has three letters");
    require(!storedEventName(name).empty() || name.empty(), "a name is stored as something");
}

void checkLengths(const APMDataTypeValidator &validator, const std::string &text)
{
    const std::size_t count = codePoints::count(text);
    require(count <= text.size() && count * 4 >= text.size(), "a code point has 1 to 4 bytes");
    if (validUtf8(text) == text)
        require(count == leadBytes(text), "well-formed text has as many code points as lead bytes");
    for (const std::size_t limit : {std::size_t{0}, std::size_t{40}, count, count + 1})
        require(codePoints::isLongerThan(text, limit) == (count > limit), "both ways of measuring agree");
    const APMValue value(text);
    require(static_cast<bool>(validator.isValidPublicEventParameterValue(value)) == (count <= 500), "500");
    require(static_cast<bool>(validator.isValidPublicUserAttributeValue(value)) ==
                (count >= 1 && count <= 36),
            "36");
    (void)validator.isValidInternalUserAttributeValue(value, text);
    (void)validator.isValidScreenParameterValue(text);
}

void checkMarker(const Refusal &refusal, APMParameters parameters, APMMonitor &monitor)
{
    const std::size_t before = parameters.size();
    addErrorMarker(parameters, refusal, monitor);
    require(parameters.size() <= before + 3, "a marker has three parameters at most");
    require(refusal.errorCode() != APMErrorCode::NoError, "every refusal has an error code");
    const APMParameters once = parameters;
    addErrorMarker(parameters, {CallSite::EventName, FailureCode::Missing, "later"}, monitor);
    require(parameters == once, "the first marker stays");
    const APMEvent event = errorEvent(refusal, 1, monitor);
    require(codePoints::count(*event.parameters.at(1).value.text()) <= 43, "a name at fault is cut");
}

void checkFilter(const std::string &name, bool isPublic, const PropertyList::Dictionary &parameters,
                 APMMonitor &monitor)
{
    const ValidationLimits limits{.publicEventParameters = 25, .customItemParameters = 10};
    const APMDataTypeValidator validator(monitor, limits);
    const EventParameterFilter filter(monitor, limits);
    const auto filtered = filter.filter(name, isPublic ? IsPublicEvent::Yes : IsPublicEvent::No, parameters);
    const APMParameters &kept = filtered.parameters;
    require(!isPublic || kept.size() <= 25, "no more parameters than the limit");
    require(!filtered.refusals.empty() || kept.size() == parameters.size(), "nothing goes without a refusal");
    for (const APMParameter &parameter : kept) {
        const APMObject key(parameter.name);
        const bool isValid = static_cast<bool>(isPublic ? validator.isValidPublicEventParameterName(key)
                                                        : validator.isValidInternalEventParameterName(key));
        require(isValid, "what is kept is valid");
        require(!parameter.value.array() || (isEcommerceEvent(name) && parameter.name == "items"), "arrays");
    }
    if (!filtered.refusals.empty())
        checkMarker(filtered.refusals.front(), kept, monitor);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    StrictMonitor monitor;
    const APMDataTypeValidator validator(monitor, {});
    Input input(data, size);
    const int how = input.byte();
    std::string name = input.text();
    checkNames(validator, name);
    checkLengths(validator, input.text(how >> 3));
    if ((how & 2) != 0)
        name = ecommerceEvents.at(name.size() % ecommerceEvents.size());
    checkFilter(name, (how & 1) != 0, input.dictionary(300, 0), monitor);
    return 0;
}
