#pragma once

#include "analytics/pipeline/LaunchArguments.h"
#include "platform/base/Result.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace skyflare {

/// What the app's command line asks for. Nothing stands where an option was not given.
struct AppOptions {
    std::string camera = "auto";
    std::optional<std::filesystem::path> dataFolder;
    LaunchSwitches launchSwitches;
    bool noAnalytics = false;
    bool background = false; ///< shows push messages, without a window
    bool help = false;
    bool version = false;

    /// Reads the arguments that follow the program's name. The error is one line that says what would be
    /// right.
    static Result<AppOptions> parse(std::span<const char *const> arguments);

    /// What --help prints.
    static std::string usage();
};

} // namespace skyflare
