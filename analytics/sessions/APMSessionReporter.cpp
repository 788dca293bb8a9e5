#include "analytics/sessions/APMSessionReporter.h"

#include "analytics/sessions/SessionLog.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace skyflare {

namespace {

constexpr std::string_view extendSessionKey = "extend_session";
constexpr std::string_view engagementKey = "_et";
constexpr std::string_view sessionIDKey = "_sid";
constexpr std::string_view sessionNumberKey = "_sno";

constexpr double longestEngagement = 3'600; ///< seconds, as far as one event tells
constexpr double leastEngagement = 1;       ///< seconds, for a screen that is left to be reported

std::int64_t millisecondsOf(double engagementSeconds)
{
    return std::llround(std::clamp(engagementSeconds, 0.0, longestEngagement) * 1'000);
}

bool isOne(const APMValue &value)
{
    return value == APMValue(std::int64_t{1}) || value == APMValue(1.0);
}

} // namespace

APMSessionReporter::APMSessionReporter(const Services &services, WorkerTurns &worker)
    : services_(services), engagementTimer_(worker, services.clock, [this] { engagementTimerFired(); })
{
}

bool APMSessionReporter::isEfficient() const
{
    return settings_.isOn(APMSwitch::EfficientEngagementReportingEnabled);
}

bool APMSessionReporter::isRedundantRemoved() const
{
    return settings_.isOn(APMSwitch::RedundantEngagementRemovalEnabled);
}

bool APMSessionReporter::tracksBackground() const
{
    return settings_.isOn(APMSwitch::AppBackgroundedTracking);
}

void APMSessionReporter::setSettings(const APMRemoteConfig &settings)
{
    constexpr auto interval = APMSetting::EventUserEngagementInterval;
    const bool isIntervalNew = settings.number(interval) != settings_.number(interval);
    settings_ = settings;
    if (isActive_ && isIntervalNew)
        restartTimer(services_.clock.secondsOfUptime());
}

void APMSessionReporter::setReporting(Reporting reporting)
{
    if (std::exchange(reporting_, reporting) == reporting || !isReporting() || !isActive_)
        return;
    const SessionMoment now = SessionMoment::now(services_.clock);
    markStart(now); // what was before is not to be reported
    startSessionIfDue(now, Cause::Activity);
}

void APMSessionReporter::handleReset()
{
    services_.record.wipe();
    const SessionMoment now = SessionMoment::now(services_.clock);
    markStart(now);
    startSessionIfDue(now, Cause::Activity);
}

void APMSessionReporter::handleAppDidBecomeActive(const SessionMoment &at)
{
    if (std::exchange(isActive_, true))
        return; // told twice: what was engaged so far still counts
    markStart(at);
    restartTimer(at.secondsOfUptime);
    startSessionIfDue(at, Cause::Activity);
}

void APMSessionReporter::handleAppWillResignActive(const SessionMoment &at)
{
    const bool isToldAgain = tracksBackground();
    std::int64_t engaged = 0;
    if (isActive_ && isToldAgain && isRedundantRemoved()) {
        engaged = millisecondsOf(engagementTime(at));
        noteActivity(at);
    } else {
        engaged = logEngagementEventAndReturnTimeWithScreen(
            std::nullopt, isToldAgain ? IsRedundant::Yes : IsRedundant::No, at);
    }
    if (isToldAgain && isActive_ && isReporting()) {
        SessionEvents::Event event{.name = "_ab"};
        if (isEfficient() && engaged >= 1)
            event.numbers.emplace_back(engagementKey, engaged);
        services_.events.logEvent(std::move(event), at);
    }
    engagementTimer_.cancel();
    isActive_ = false;
}

std::int64_t APMSessionReporter::handleScreenDidChangeFromScreen(const std::optional<APMScreen> &screen,
                                                                 const APMScreen &, const SessionMoment &at)
{
    if (!isActive_)
        return 0;
    const double onScreen = at.secondsOfUptime - efficientEngagementStart_;
    if (isEfficient() && isRedundantRemoved())
        noteActivity(at);
    else if (engagementTime(at) >= leastEngagement)
        logEngagementEventAndReturnTimeWithScreen(screen, screen ? IsRedundant::Yes : IsRedundant::No, at);
    if (!screen)
        return 0;
    efficientEngagementStart_ = at.secondsOfUptime; // "_vs" tells of what was before
    return millisecondsOf(onScreen);
}

void APMSessionReporter::processSessionFromEvent(const APMEvent &event)
{
    const auto found = std::ranges::find(event.parameters, extendSessionKey, &APMParameter::name);
    if (found == event.parameters.end())
        return;
    if (!isOne(found->value)) {
        writeLog(services_.monitor, sessionLog::extendSessionReserved);
        return;
    }
    if (isActive_ || !isReporting())
        return;
    const SessionMoment now = SessionMoment::now(services_.clock);
    const double sinceStart =
        std::abs(now.secondsSince1970 - static_cast<double>(services_.record.sessionID()));
    if (services_.record.sessionNumber() == 0 ||
        sinceStart >= settings_.number(APMSetting::SessionMinimumInterval))
        startSessionIfDue(now, Cause::Event);
    noteActivity(now);
}

bool APMSessionReporter::hasExpired(double now) const
{
    const double timeout = services_.record.sessionTimeoutInterval().value_or(
        settings_.number(APMSetting::SessionTimeoutInterval));
    return services_.record.sessionNumber() == 0 ||
           std::abs(now - services_.record.lastActivityTime()) > timeout;
}

void APMSessionReporter::startSessionIfDue(const SessionMoment &at, Cause cause)
{
    if (isReporting() && hasExpired(at.secondsSince1970))
        logSessionStartEvent(at, cause);
}

void APMSessionReporter::logSessionStartEvent(const SessionMoment &at, Cause cause)
{
    if (!isActive_ && cause == Cause::Activity) {
        writeLog(services_.monitor, sessionLog::sessionNotStarted);
        return;
    }
    services_.record.beginSession(at.secondsSince1970);
    const std::int64_t id = services_.record.sessionID();
    const std::int64_t number = services_.record.sessionNumber();
    services_.events.logEvent({.name = "_s", .numbers = {{sessionIDKey, id}, {sessionNumberKey, number}}},
                              at);
    services_.events.setUserProperty(sessionIDKey, id);
    services_.events.setUserProperty(sessionNumberKey, number);
}

double APMSessionReporter::engagementTime(const SessionMoment &at) const
{
    const double start = isEfficient() ? efficientEngagementStart_ : engagementStart_;
    const double engaged = at.secondsOfUptime - start;
    if (engaged >= 0)
        return engaged;
    writeLog(services_.monitor, sessionLog::negativeEngagement);
    return 0;
}

std::int64_t APMSessionReporter::logEngagementEventAndReturnTimeWithScreen(
    const std::optional<APMScreen> &screen, IsRedundant isRedundant, const SessionMoment &at)
{
    if (!isActive_) {
        writeLog(services_.monitor, sessionLog::engagementNotLogged);
        return 0;
    }
    const std::int64_t engaged = millisecondsOf(engagementTime(at));
    if (isReporting()) {
        SessionEvents::Event event{.name = "_e", .screen = screenParametersOf(screen)};
        event.numbers.emplace_back(engagementKey, engaged);
        if (isEfficient() && isRedundant == IsRedundant::Yes)
            event.numbers.emplace_back("_fr", 1);
        services_.events.logEvent(std::move(event), at);
    }
    engagementStart_ = at.secondsOfUptime;
    if (isRedundant == IsRedundant::No)
        efficientEngagementStart_ = at.secondsOfUptime;
    noteActivity(at);
    restartTimer(at.secondsOfUptime);
    return engaged;
}

void APMSessionReporter::markStart(const SessionMoment &at)
{
    engagementStart_ = efficientEngagementStart_ = at.secondsOfUptime;
}

/// It keeps the session alive.
void APMSessionReporter::noteActivity(const SessionMoment &at)
{
    if (isReporting())
        services_.record.setLastActivityTime(at.secondsSince1970);
}

void APMSessionReporter::restartTimer(double secondsOfUptime)
{
    const double interval = settings_.number(APMSetting::EventUserEngagementInterval);
    // Deliberate: no timer below what is worth a report; at 0 it would never stop to fire.
    if (interval < leastEngagement)
        engagementTimer_.cancel();
    else
        engagementTimer_.set(secondsOfUptime + interval);
}

void APMSessionReporter::engagementTimerFired()
{
    if (services_.notificationCenter)
        services_.notificationCenter->postNotificationName(engagementTimerDidFire);
    logEngagementEventAndReturnTimeWithScreen(std::nullopt, IsRedundant::No,
                                              SessionMoment::now(services_.clock));
}

} // namespace skyflare
