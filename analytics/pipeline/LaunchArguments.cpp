#include "analytics/pipeline/LaunchArguments.h"

#include <algorithm>
#include <array>
#include <string>

namespace skyflare {

namespace {

struct ArgumentRow {
    std::string_view argument;
    std::optional<bool> LaunchSwitches::*field;
    bool isOn;
};

/// The first row of a switch whose argument is present decides.
constexpr std::array<ArgumentRow, 10> argumentRows{{
    {"-noAPMAnalyticsDebugEnabled", &LaunchSwitches::debugMode, false},
    {"-noFIRAnalyticsDebugEnabled", &LaunchSwitches::debugMode, false},
    {"-FIRDebugDisabled", &LaunchSwitches::debugMode, false},
    {"-APMAnalyticsDebugEnabled", &LaunchSwitches::debugMode, true},
    {"-FIRAnalyticsDebugEnabled", &LaunchSwitches::debugMode, true},
    {"-FIRDebugEnabled", &LaunchSwitches::debugMode, true},
    {"-APMAnalyticsVerboseLoggingDisabled", &LaunchSwitches::verboseLogging, false},
    {"-FIRAnalyticsVerboseLoggingDisabled", &LaunchSwitches::verboseLogging, false},
    {"-APMAnalyticsVerboseLoggingEnabled", &LaunchSwitches::verboseLogging, true},
    {"-FIRAnalyticsVerboseLoggingEnabled", &LaunchSwitches::verboseLogging, true},
}};

constexpr std::string_view debugModeKey = "/mipeme/measurement/debug_mode";
constexpr std::string_view verboseLoggingKey = "/mipeme/measurement/verbose_logging";

bool decide(const std::optional<bool> &asked, std::string_view key, UserDefaults &defaults)
{
    const bool persisted = defaults.boolForKey(key);
    if (asked && (*asked != persisted || !defaults.hasObjectForKey(key)))
        defaults.setBool(*asked, key);
    return asked.value_or(persisted);
}

} // namespace

bool isLaunchArgument(std::string_view argument)
{
    return std::ranges::find(argumentRows, argument, &ArgumentRow::argument) != argumentRows.end();
}

LaunchSwitches LaunchSwitches::in(std::span<const char *const> arguments)
{
    const auto isEnd = [](std::string_view argument) { return argument == "--"; };
    const auto options =
        arguments.first(std::size_t(std::ranges::find_if(arguments, isEnd) - arguments.begin()));
    LaunchSwitches switches;
    for (const ArgumentRow &row : argumentRows) {
        auto &field = switches.*row.field;
        const auto isIt = [&](std::string_view argument) { return argument == row.argument; };
        if (!field && std::ranges::any_of(options, isIt))
            field = row.isOn;
    }
    return switches;
}

MonitorModes decideMonitorModes(const LaunchSwitches &switches, UserDefaults &defaults)
{
    return {.debugMode = decide(switches.debugMode, debugModeKey, defaults),
            .verboseLogging = decide(switches.verboseLogging, verboseLoggingKey, defaults)};
}

} // namespace skyflare
