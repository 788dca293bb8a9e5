#include "app/AppOptions.h"

#include "platform/base/CommandLine.h"

#include <array>
#include <vector>

namespace skyflare {
namespace {

constexpr std::array<ValueOption<AppOptions>, 2> valueOptions{{
    {"--camera", "auto|simulated|NAME", "which camera watches (auto: the best there is)",
     readText<&AppOptions::camera>},
    {"--data-dir", "DIR", "keep photos, settings and everything else under DIR",
     readText<&AppOptions::dataFolder>},
}};

constexpr std::array<Flag<AppOptions>, 4> flags{{
    {"--no-analytics", "record no events in this run", &AppOptions::noAnalytics},
    {"--background", "for the message bus: show push messages, no window", &AppOptions::background},
    {"--help", "this text", &AppOptions::help},
    {"--version", "the version", &AppOptions::version},
}};

constexpr OptionTables<AppOptions> tables{valueOptions, flags};

} // namespace

Result<AppOptions> AppOptions::parse(std::span<const char *const> arguments)
{
    AppOptions options;
    std::vector<const char *> launchArguments;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (isLaunchArgument(arguments[i]))
            launchArguments.push_back(arguments[i]);
        else if (const auto taken = tables.take(options, arguments, i); !taken)
            return taken.error();
    }
    options.launchSwitches = LaunchSwitches::in(launchArguments);
    return options;
}

std::string AppOptions::usage()
{
    return "Usage: skyflare [OPTION]…\n"
           "Opens the camera that photographs fireworks by itself.\n\n" +
           tables.help() +
           "\n\"simulated\" takes a size, a rate and a seed: simulated:1280x720@60,seed=7\n"
           "-FIRDebugEnabled and -FIRDebugDisabled, -FIRAnalyticsVerboseLoggingEnabled and …Disabled switch "
           "how\nthe recording of events tells of itself, for this run and later ones.\n"
           "\nExit status: 0 done, 1 it could not start, 2 a wrong command line.\n";
}

} // namespace skyflare
