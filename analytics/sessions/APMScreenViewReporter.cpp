#include "analytics/sessions/APMScreenViewReporter.h"

#include "analytics/sessions/SessionLog.h"
#include "platform/base/Text.h"

#include <utility>

namespace skyflare {

namespace {

APMParameter numberParameter(std::string_view name, std::int64_t number)
{
    return {std::string(name), APMValue(number)};
}

std::string described(std::string_view className, std::uint64_t controllerID)
{
    return quoted(className) + ", " + std::to_string(controllerID);
}

} // namespace

void APMScreenViewReporter::viewDidAppear(std::string_view className, std::uint64_t controllerID,
                                          const SessionMoment &at)
{
    if (automaticReporting_ == AutomaticReporting::Off)
        return;
    if (controller_ && controller_->id == controllerID) {
        writeLog(services_.monitor, sessionLog::controllerAlreadyTracked, described(className, controllerID));
        return;
    }
    writeLog(services_.monitor, sessionLog::trackingController, described(className, controllerID));
    controller_ = Controller{controllerID, defaultScreenClass(className)};
    show({.className = classOr(std::nullopt)}, at);
}

void APMScreenViewReporter::setScreenName(Names names, const SessionMoment &at)
{
    if (automaticReporting_ == AutomaticReporting::Off) {
        writeLog(services_.monitor, sessionLog::screenReportingDisabled);
        return;
    }
    if (!controller_) {
        writeLog(services_.monitor, sessionLog::noControllerYet);
        return;
    }
    APMScreen screen{.name = std::move(names.name),
                     .className = classOr(std::move(names.screenClass)),
                     .isManuallySet = true,
                     .isManuallyTracked = true};
    if (screen_ && screen_->name == screen.name && screen_->className == screen.className) {
        writeLog(services_.monitor, sessionLog::duplicateScreen);
        return;
    }
    show(std::move(screen), at);
}

std::optional<APMParameters> APMScreenViewReporter::screenViewed(Names names, const SessionMoment &at)
{
    return changeTo({.name = std::move(names.name),
                     .className = classOr(std::move(names.screenClass)),
                     .isManuallyTracked = true},
                    at);
}

std::string APMScreenViewReporter::defaultScreenClass(std::string_view className) const
{
    const std::size_t point = className.rfind('.');
    if (point == std::string_view::npos || point + 1 == className.size())
        return std::string(className);
    const std::string_view trimmed = className.substr(point + 1);
    writeLog(services_.monitor, sessionLog::trimmedClassName, quoted(className) + ", " + quoted(trimmed));
    return std::string(trimmed);
}

std::optional<std::string> APMScreenViewReporter::classOr(std::optional<std::string> screenClass) const
{
    if (screenClass || !controller_ || controller_->className.empty())
        return screenClass;
    return controller_->className;
}

/// @return what "_vs" carries; nothing: it is not to be logged
std::optional<APMParameters> APMScreenViewReporter::changeTo(APMScreen screen, const SessionMoment &at)
{
    if (!screen.name && !screen.className) {
        writeLog(services_.monitor, sessionLog::emptyScreen);
        return std::nullopt;
    }
    screen.instanceID = incrementScreenInstanceID();
    screen.eventTimestamp = at.secondsSince1970;
    if (services_.notificationCenter)
        services_.notificationCenter->postNotificationName(screenDidChange);
    const std::int64_t engaged = services_.sessions.handleScreenDidChangeFromScreen(screen_, screen, at);
    const std::optional<APMScreen> previous = std::exchange(screen_, std::move(screen));
    if (!services_.sessions.isActive()) {
        writeLog(services_.monitor, sessionLog::appNotActive);
        return std::nullopt;
    }
    APMParameters parameters = screenParametersOf(screen_);
    for (APMParameter &parameter : previousScreenParametersOf(previous))
        parameters.push_back(std::move(parameter));
    if (engaged >= 1)
        parameters.push_back(numberParameter("_et", engaged));
    if (screen_->isManuallyTracked)
        parameters.push_back(numberParameter("_mst", 1));
    return parameters;
}

void APMScreenViewReporter::show(APMScreen screen, const SessionMoment &at)
{
    using Origin = SessionEvents::Event::Origin;
    const Origin origin = screen.isManuallyTracked ? Origin::App : Origin::Auto;
    auto parameters = changeTo(std::move(screen), at);
    if (parameters && services_.sessions.isReporting())
        services_.events.logEvent({.origin = origin, .name = "_vs", .screen = *std::move(parameters)}, at);
}

} // namespace skyflare
