#include "analytics/validation/ErrorMarker.h"

#include "analytics/validation/CodePoints.h"
#include "analytics/validation/RefusalLog.h"
#include "analytics/validation/ValidationLimits.h"

#include <algorithm>
#include <memory>
#include <new>
#include <span>

namespace skyflare {

namespace {

constexpr std::string_view errorName = "_err"; ///< of the event, and of the parameter with the code
constexpr std::string_view nameParameter = "_ev";
constexpr std::string_view lengthParameter = "_el";

bool has(const APMParameters &parameters, std::string_view name)
{
    return std::ranges::find(parameters, name, &APMParameter::name) != parameters.end();
}

std::size_t longestName(CallSite site)
{
    switch (site) {
    case CallSite::UserPropertyName:
    case CallSite::UserPropertyValue:
    case CallSite::UserPropertyCount:
        return longestUserPropertyName;
    case CallSite::EventOrigin:
        return longestOrigin;
    case CallSite::EventName:
    case CallSite::EventNameCount:
    case CallSite::PublicEventCount:
        return longestEventName;
    default:
        return longestParameterName;
    }
}

bool tellsLength(const Refusal &refusal)
{
    const APMErrorCode code = refusal.errorCode();
    return refusal.failureCode == FailureCode::TooLong || refusal.failureCode == FailureCode::TooManyItems ||
           code == APMErrorCode::InvalidParameterValue || code == APMErrorCode::UserPropertyValueTooLong;
}

/// Nothing where memory is short.
std::optional<std::string> trimmedText(std::span<const char32_t> start)
{
    try {
        std::string text;
        codePoints::append(text, start);
        text += "...";
        return text;
    } catch (const std::bad_alloc &) {
        return {};
    }
}

} // namespace

std::string trimmed(std::string text, std::size_t length, APMMonitor &monitor)
{
    if (!codePoints::isLongerThan(text, length))
        return text;
    const std::unique_ptr<char32_t[]> buffer(new (std::nothrow) char32_t[length]);
    if (!buffer) {
        const APMValue bytes(static_cast<std::int64_t>(length * sizeof(char32_t)));
        RefusalLog(monitor).write(APMMonitor::Level::Error, messages::noBuffer, {.value = bytes});
        return text;
    }
    const std::span<char32_t> start(buffer.get(), length);
    auto shorter = trimmedText(start.first(codePoints::decode(text, start)));
    if (!shorter) {
        RefusalLog(monitor).write(APMMonitor::Level::Error, messages::noTrimmedString);
        return text;
    }
    return *std::move(shorter);
}

void addErrorMarker(APMParameters &parameters, const Refusal &refusal, APMMonitor &monitor)
{
    const bool namesFault = has(parameters, nameParameter) || has(parameters, lengthParameter);
    if (!has(parameters, errorName))
        parameters.push_back(
            {std::string(errorName), APMValue(static_cast<std::int64_t>(refusal.errorCode()))});
    if (namesFault)
        return;
    parameters.push_back(
        {std::string(nameParameter), APMValue(trimmed(refusal.name, longestName(refusal.site), monitor))});
    if (refusal.valueLength && tellsLength(refusal))
        parameters.push_back({std::string(lengthParameter), APMValue(*refusal.valueLength)});
}

APMEvent errorEvent(const Refusal &refusal, double timestamp, APMMonitor &monitor)
{
    APMEvent event;
    event.origin = "auto";
    event.name = errorName;
    event.timestamp = timestamp;
    addErrorMarker(event.parameters, refusal, monitor);
    return event;
}

} // namespace skyflare
