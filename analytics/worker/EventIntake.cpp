#include "analytics/worker/EventIntake.h"

#include "analytics/validation/ErrorMarker.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

bool has(const APMParameters &parameters, std::string_view name)
{
    return std::ranges::find(parameters, name, &APMParameter::name) != parameters.end();
}

} // namespace

void EventIntake::setLimits(const ValidationLimits &limits)
{
    validator_ = APMDataTypeValidator(monitor_, limits);
    filter_ = EventParameterFilter(monitor_, limits);
}

std::optional<Refusal> EventIntake::judge(const LogEventCall &call) const
{
    const Verdict origin = APMDataTypeValidator::isForwardedEventOrigin(call.origin)
                               ? validator_.isValidForwardedEventOrigin(call.origin)
                               : validator_.isValidInternalEventOrigin(call.origin);
    if (!origin)
        return Refusal{CallSite::EventOrigin, origin.failureCode, call.origin};
    const APMObject given = std::optional<std::string_view>(call.name);
    const Verdict name = call.isPublicEvent == IsPublicEvent::Yes
                             ? validator_.isValidPublicEventName(given)
                             : validator_.isValidInternalEventName(given);
    if (!name)
        return Refusal{CallSite::EventName, name.failureCode, nameAtFault(given)};
    return {};
}

std::variant<APMEvent, Refusal> EventIntake::eventOf(LogEventCall call) const
{
    if (auto refusal = judge(call)) {
        ledger_.countRefusal(EventLedger::RefusedWhat::Event, refusal->errorCode(), refusal->failureCode);
        return *std::move(refusal);
    }
    auto [parameters, refusals] = filter_.filter(*call.name, call.isPublicEvent, std::move(call.parameters));
    std::ranges::for_each(refusals, [this](const Refusal &refusal) { refusePart(refusal); });
    if (!refusals.empty())
        addErrorMarker(parameters, refusals.front(), monitor_);
    addDefaults(parameters);
    addScreenParameters(parameters, std::move(call.addedScreenParameters));
    return APMEvent{.origin = std::move(call.origin),
                    .name = *std::move(call.name),
                    .timestamp = call.timestamp.value_or(0),
                    .previousTimestamp = 0,
                    .parameters = std::move(parameters)};
}

void EventIntake::addDefaults(APMParameters &parameters) const
{
    for (const APMParameter &parameter : defaults_)
        if (!has(parameters, parameter.name))
            parameters.push_back(parameter);
}

void EventIntake::addScreenParameters(APMParameters &parameters, APMParameters added) const
{
    for (APMParameter &parameter : added) {
        const std::string *text = parameter.value.text();
        if (const Verdict verdict = text ? validator_.isValidScreenParameterValue(*text) : Verdict();
            !verdict) {
            const Refusal refusal{CallSite::ParameterValue, verdict.failureCode, parameter.name,
                                  lengthOf(parameter.value)};
            refusePart(refusal);
            addErrorMarker(parameters, refusal, monitor_);
        } else if (!has(parameters, parameter.name)) {
            parameters.push_back(std::move(parameter));
        }
    }
}

std::optional<Refusal>
EventIntake::setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters)
{
    constexpr std::string_view noEvent;
    auto [accepted, refusals] = filter_.filter(noEvent, IsPublicEvent::Yes,
                                               std::move(parameters).value_or(PropertyList::Dictionary()));
    defaults_ = std::move(accepted);
    std::ranges::for_each(refusals, [this](const Refusal &refusal) { refusePart(refusal); });
    return refusals.empty() ? std::nullopt : std::optional(std::move(refusals.front()));
}

void EventIntake::refusePart(const Refusal &refusal) const
{
    ledger_.countRefusal(EventLedger::RefusedWhat::Part, refusal.errorCode(), refusal.failureCode);
}

} // namespace skyflare
