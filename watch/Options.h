#pragma once

#include "analytics/pipeline/LaunchArguments.h"
#include "capture/Levels.h"
#include "platform/base/Result.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace skyflare {

/// What the command line asks for. Nothing stands where an option was not given.
struct Options {
    std::optional<std::filesystem::path> film;
    std::string camera = "auto";
    bool listCameras = false;
    std::optional<SensitivityLevel> sensitivity;
    std::optional<CaptureFrequency> frequency;
    double armAfterSeconds = 2;
    std::optional<double> durationSeconds;
    std::optional<int> photos;
    std::optional<std::filesystem::path> dataFolder;
    std::optional<std::filesystem::path> exportFolder;
    std::optional<std::filesystem::path> framesCsv;
    LaunchSwitches launchSwitches;
    bool noAnalytics = false;
    bool analyticsStatus = false;
    bool analyticsShow = false;
    bool json = false;
    bool quiet = false;
    bool help = false;
    bool version = false;
};

/// Reads the arguments that follow the program's name. The error is one line that says what would be right.
Result<Options> parseOptions(std::span<const char *const> arguments);

/// What --help prints.
std::string usage();

} // namespace skyflare
