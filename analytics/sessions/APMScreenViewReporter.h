#pragma once

#include "analytics/sessions/APMSessionReporter.h"

namespace skyflare {

/// Posted on the engine's worker when another screen is shown.
inline constexpr std::string_view screenDidChange = "kAPMScreenViewReporterScreenDidChange";

/// Knows which screen is shown, by the controllers that appear or by what the app says, and logs "_vs".
///
/// Threads: the engine's worker. Borrows its Services.
class APMScreenViewReporter {
public:
    struct Services {
        SessionEvents &events;
        APMSessionReporter &sessions;
        APMMonitor &monitor;
        NotificationCenter *notificationCenter; ///< may be null
    };
    enum class AutomaticReporting { Off, On };
    /// What the app calls a screen.
    struct Names {
        std::optional<std::string> name;
        std::optional<std::string> screenClass; ///< nothing: that of the controller
    };

    explicit APMScreenViewReporter(const Services &services) : services_(services) {}

    void setAutomaticReporting(AutomaticReporting reporting) { automaticReporting_ = reporting; }

    /// @param className  of the controller; a module in front of it, which ends with ".", is left out
    /// @param controllerID  the same as long as the controller lives
    void viewDidAppear(std::string_view className, std::uint64_t controllerID, const SessionMoment &at);
    // setScreenName:screenClass:
    /// Over what the controller that is shown is called, until another one appears.
    void setScreenName(Names names, const SessionMoment &at);
    /// The app logs itself that a screen is shown.
    /// @return what "_vs" carries; nothing: it is not to be logged
    std::optional<APMParameters> screenViewed(Names names, const SessionMoment &at);

    [[nodiscard]] const std::optional<APMScreen> &screen() const { return screen_; }

private:
    struct Controller {
        std::uint64_t id = 0;
        std::string className;
    };

    Services services_;
    AutomaticReporting automaticReporting_ = AutomaticReporting::On;
    std::optional<Controller> controller_;
    std::optional<APMScreen> screen_;
    std::int64_t lastInstanceID_ = 0;

    [[nodiscard]] std::int64_t incrementScreenInstanceID() { return ++lastInstanceID_; }
    [[nodiscard]] std::string defaultScreenClass(std::string_view className) const;
    [[nodiscard]] std::optional<std::string> classOr(std::optional<std::string> screenClass) const;
    std::optional<APMParameters> changeTo(APMScreen screen, const SessionMoment &at);
    void show(APMScreen screen, const SessionMoment &at);
};

} // namespace skyflare
