#pragma once

#include "analytics/pipeline/APMAnalyticsOptions.h"
#include "analytics/sessions/APMScreenViewReporter.h"
#include "analytics/worker/LogEventCall.h"
#include "analytics/worker/MeasurementServices.h"
#include "analytics/worker/UserProperties.h"

namespace skyflare {

/// Sessions and screens as the engine has them: the two reporters, and the way from them to a row.
///
/// What the program reports of its activity and its screens comes in its order among the events, each with
/// the moment at which it was reported.
///
/// Threads: the engine's worker. Borrows its services, the worker and the engine.
class Sessions final : private SessionEvents {
public:
    /// The rest of the engine, as this logs through it.
    struct Engine {
        std::function<void(LogEventCall)> logEvent;
        std::function<void(UserPropertyCall)> setUserAttribute;
    };

    Sessions(const MeasurementServices &services, WorkerTurns &worker, Engine engine);

    void start(const APMAnalyticsOptions &options, Collection collection);
    /// When the server gives others.
    void setSettings(const APMRemoteConfig &settings);
    void setCollection(Collection collection);
    void setSessionTimeoutInterval(double seconds) { record_.setSessionTimeoutInterval(seconds); }
    /// After the wipe.
    void handleReset() { sessions_.handleReset(); }
    /// Whether sessionID may be asked for.
    [[nodiscard]] bool tellsSessionID() const { return settings_.isOn(APMSwitch::SessionIDApi); }

    // What the program reports

    void applicationDidBecomeActive(const SessionMoment &at) { sessions_.handleAppDidBecomeActive(at); }
    void applicationWillResignActive(const SessionMoment &at) { sessions_.handleAppWillResignActive(at); }
    void viewDidAppear(const std::string &className, std::uint64_t controllerID, const SessionMoment &at);
    void setScreenName(const APMScreenViewReporter::Names &names, const SessionMoment &at);

    // What an event passes

    /// Gives it the screen that is shown, unless it has its own. "screen_view" of the app changes the screen.
    /// @param secondsOfUptime  when it was logged; nothing: the caller gave the event a time of its own
    /// @return whether it is to be recorded; what is not has been counted
    [[nodiscard]] bool addScreen(APMEvent &event, IsPublicEvent isPublicEvent,
                                 std::optional<double> secondsOfUptime);
    void processSessionFromEvent(const APMEvent &event) { sessions_.processSessionFromEvent(event); }

private:
    APMMonitor &monitor_;
    const Clock &clock_;
    EventLedger &ledger_;
    const Engine engine_;
    APMRemoteConfig settings_;
    SessionRecord record_;
    APMSessionReporter sessions_;
    APMScreenViewReporter screens_;

    void logEvent(Event event, const SessionMoment &at) override;
    void setUserProperty(std::string_view name, std::int64_t value) override;
    [[nodiscard]] APMDataTypeValidator validator() const;
    [[nodiscard]] bool isValid(const std::optional<std::string> &screenText) const;
    std::optional<std::string> takeScreenText(APMParameters &parameters, std::string_view name);
    [[nodiscard]] bool becomeScreenView(APMEvent &event, const SessionMoment &at);
};

} // namespace skyflare
