#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/model/APMMonitor.h"
#include "analytics/pipeline/Alarm.h"
#include "analytics/sessions/APMScreen.h"
#include "analytics/sessions/SessionEvents.h"
#include "analytics/sessions/SessionRecord.h"
#include "analytics/upload/APMRemoteConfig.h"
#include "platform/base/NotificationCenter.h"

namespace skyflare {

/// Posted on the engine's worker when the time has come to report engagement.
inline constexpr std::string_view engagementTimerDidFire = "kAPMSessionReporterEngagementTimerDidFire";

/// Decides when a session begins, numbers it, and measures how long the app is used: logs "_s", "_e" and
/// "_ab".
///
/// Engagement is by uptime, and counted from two marks. The first is where the last "_e" ended; the second is
/// where the last report ended that is not redundant, which with efficient reporting is the one that counts:
/// an "_e" whose time "_vs" or "_ab" tell again carries "_fr", and leaves the second mark where it is.
///
/// Threads: the engine's worker. Borrows its Services and the worker.
class APMSessionReporter {
public:
    struct Services {
        SessionEvents &events;
        SessionRecord &record;
        APMMonitor &monitor;
        const Clock &clock;
        NotificationCenter *notificationCenter; ///< may be null
    };
    enum class Reporting { Off, On };

    APMSessionReporter(const Services &services, WorkerTurns &worker);

    void setSettings(const APMRemoteConfig &settings);
    /// Off: nothing is logged or persisted, but whether the app is active is still known. On while it is: a
    /// session that is due begins, and engagement counts from now.
    void setReporting(Reporting reporting);
    [[nodiscard]] bool isReporting() const { return reporting_ == Reporting::On; }
    [[nodiscard]] bool isActive() const { return isActive_; }

    void handleAppDidBecomeActive(const SessionMoment &at);
    void handleAppWillResignActive(const SessionMoment &at);
    // handleScreenDidChangeFromScreen:toScreen:
    /// Before `toScreen` is the one that events carry.
    /// @return how long the screen that is left was used, in milliseconds
    std::int64_t handleScreenDidChangeFromScreen(const std::optional<APMScreen> &screen,
                                                 const APMScreen &toScreen, const SessionMoment &at);
    /// An event that asks for it begins or extends a session while the app is not active.
    void processSessionFromEvent(const APMEvent &event);
    /// What was stored has been wiped: there never was a session, and nothing is left to report.
    void handleReset();

private:
    enum class IsRedundant { No, Yes };
    enum class Cause { Activity, Event };

    Services services_;
    APMRemoteConfig settings_;
    Alarm engagementTimer_;
    Reporting reporting_ = Reporting::Off;
    bool isActive_ = false;
    double engagementStart_ = 0;          ///< seconds of uptime
    double efficientEngagementStart_ = 0; ///< seconds of uptime

    [[nodiscard]] bool isEfficient() const;
    [[nodiscard]] bool isRedundantRemoved() const;
    [[nodiscard]] bool tracksBackground() const;
    [[nodiscard]] bool hasExpired(double now) const;
    void startSessionIfDue(const SessionMoment &at, Cause cause);
    void logSessionStartEvent(const SessionMoment &at, Cause cause);
    [[nodiscard]] double engagementTime(const SessionMoment &at) const;
    std::int64_t logEngagementEventAndReturnTimeWithScreen(const std::optional<APMScreen> &screen,
                                                           IsRedundant isRedundant, const SessionMoment &at);
    void markStart(const SessionMoment &at);
    void noteActivity(const SessionMoment &at);
    void restartTimer(double secondsOfUptime);
    void engagementTimerFired();
};

} // namespace skyflare
