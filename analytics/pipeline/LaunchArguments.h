#pragma once

#include "platform/base/UserDefaults.h"

#include <optional>
#include <span>
#include <string_view>

namespace skyflare {

/// Whether `argument` is one of the engine's launch arguments. Every program takes them beside its own.
[[nodiscard]] bool isLaunchArgument(std::string_view argument);

/// What the launch arguments switch; nothing where none of them says so.
///
/// Threads: any; a value.
struct LaunchSwitches {
    std::optional<bool> debugMode;
    std::optional<bool> verboseLogging;

    /// Of what turns a switch off and what turns it on, off wins, in whatever order they stand. What follows
    /// "--" is no option, but the name of a file.
    /// @param arguments  those behind the program's name; any others are passed over
    static LaunchSwitches in(std::span<const char *const> arguments);
};

/// How the engine's monitor works in this run.
///
/// Threads: any; a value.
struct MonitorModes {
    bool debugMode = false; ///< uploads come soon, and events are marked for those who watch them arrive
    bool verboseLogging = false;

    bool operator==(const MonitorModes &) const = default;
};

/// Decides the modes, once at start: as the arguments say, else as was persisted last, else off.
///
/// What an argument decides is persisted and holds for later starts without one, until its opposite is given:
/// so a program that a desktop starts without arguments can be watched too. Writes only what changes.
MonitorModes decideMonitorModes(const LaunchSwitches &switches, UserDefaults &defaults);

} // namespace skyflare
