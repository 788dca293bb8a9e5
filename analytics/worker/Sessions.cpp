#include "analytics/worker/Sessions.h"

#include "analytics/validation/ErrorMarker.h"
#include "analytics/worker/MeasurementLimits.h"

#include <algorithm>
#include <utility>

namespace skyflare {

Sessions::Sessions(const MeasurementServices &services, WorkerTurns &worker, Engine engine)
    : monitor_(services.monitor),
      clock_(services.clock),
      ledger_(services.ledger),
      engine_(std::move(engine)),
      record_(services.config.defaults()),
      sessions_({*this, record_, services.monitor, services.clock, services.notificationCenter}, worker),
      screens_({*this, sessions_, services.monitor, services.notificationCenter})
{
    setSettings(services.settings);
}

void Sessions::start(const APMAnalyticsOptions &options, Collection collection)
{
    using Automatic = APMScreenViewReporter::AutomaticReporting;
    screens_.setAutomaticReporting(options.automaticScreenReportingEnabled ? Automatic::On : Automatic::Off);
    setCollection(collection);
}

void Sessions::setSettings(const APMRemoteConfig &settings)
{
    settings_ = settings;
    sessions_.setSettings(settings);
}

void Sessions::setCollection(Collection collection)
{
    using Reporting = APMSessionReporter::Reporting;
    sessions_.setReporting(collection == Collection::On ? Reporting::On : Reporting::Off);
}

APMDataTypeValidator Sessions::validator() const
{
    return {monitor_, MeasurementLimits::of(settings_).validation};
}

bool Sessions::isValid(const std::optional<std::string> &screenText) const
{
    return !screenText || validator().isValidScreenParameterValue(*screenText);
}

void Sessions::viewDidAppear(const std::string &className, std::uint64_t controllerID,
                             const SessionMoment &at)
{
    if (isValid(className))
        screens_.viewDidAppear(className, controllerID, at);
}

void Sessions::setScreenName(const APMScreenViewReporter::Names &names, const SessionMoment &at)
{
    if (isValid(names.name) && isValid(names.screenClass))
        screens_.setScreenName(names, at);
}

bool Sessions::addScreen(APMEvent &event, IsPublicEvent isPublicEvent, std::optional<double> secondsOfUptime)
{
    if (isPublicEvent == IsPublicEvent::Yes && event.origin == appOrigin && event.name == screenViewName)
        return becomeScreenView(event, secondsOfUptime ? SessionMoment{event.timestamp, *secondsOfUptime}
                                                       : SessionMoment::now(clock_));
    if (haveScreen(event.parameters))
        return true;
    for (APMParameter &parameter : screenParametersOf(screens_.screen()))
        event.parameters.push_back(std::move(parameter));
    return true;
}

/// What the app calls the screen moves to where the engine has it; what is no such name goes alone.
std::optional<std::string> Sessions::takeScreenText(APMParameters &parameters, std::string_view name)
{
    const auto found = std::ranges::find(parameters, name, &APMParameter::name);
    if (found == parameters.end())
        return std::nullopt;
    const APMValue value = std::move(found->value);
    parameters.erase(found);
    const std::string *text = value.text();
    const Verdict verdict =
        validator().isValidScreenParameterValue(text ? APMObject(*text) : APMObject(value));
    if (verdict)
        return *text;
    const Refusal refusal{CallSite::ParameterValue, verdict.failureCode, std::string(name), lengthOf(value)};
    ledger_.countRefusal(EventLedger::RefusedWhat::Part, refusal.errorCode(), refusal.failureCode);
    addErrorMarker(parameters, refusal, monitor_);
    return std::nullopt;
}

bool Sessions::becomeScreenView(APMEvent &event, const SessionMoment &at)
{
    auto name = takeScreenText(event.parameters, "screen_name");
    auto screenClass = takeScreenText(event.parameters, "screen_class");
    auto screen = screens_.screenViewed({std::move(name), std::move(screenClass)}, at);
    if (!screen) {
        ledger_.countRefusal(EventLedger::RefusedWhat::Event, APMErrorCode::NoError, FailureCode::Valid);
        return false;
    }
    std::ranges::move(*screen, std::back_inserter(event.parameters));
    return true;
}

void Sessions::logEvent(Event event, const SessionMoment &at)
{
    LogEventCall call;
    call.origin = event.origin == Event::Origin::App ? appOrigin : autoOrigin;
    call.isPublicEvent = IsPublicEvent::No;
    call.name = event.name;
    for (const auto &[name, number] : event.numbers)
        call.parameters.emplace(name, number);
    call.timestamp = at.secondsSince1970;
    call.addedScreenParameters = std::move(event.screen);
    ledger_.count(LedgerEntry::Raised);
    engine_.logEvent(std::move(call));
}

void Sessions::setUserProperty(std::string_view name, std::int64_t value)
{
    UserPropertyCall call{UserPropertyCall::Kind::Internal, std::string(autoOrigin), std::string(name), {}};
    call.value.emplace(value);
    engine_.setUserAttribute(std::move(call));
}

} // namespace skyflare
