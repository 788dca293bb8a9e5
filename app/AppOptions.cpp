#include "app/AppOptions.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace skyflare {
namespace {

Error usageError(std::string message)
{
    return {.domain = "usage", .code = 2, .message = std::move(message)};
}

struct ValueOption {
    std::string_view name;
    std::string_view placeholder;
    std::string_view help;
    void (*read)(AppOptions &, std::string_view);
};

constexpr std::array<ValueOption, 2> valueOptions{{
    {"--camera", "auto|simulated|NAME", "which camera watches (auto: the best there is)",
     [](AppOptions &options, std::string_view text) { options.camera = text; }},
    {"--data-dir", "DIR", "keep photos, settings and everything else under DIR",
     [](AppOptions &options, std::string_view text) { options.dataFolder.emplace(text); }},
}};

struct Flag {
    std::string_view name;
    std::string_view help;
    bool AppOptions::*member;
};

constexpr std::array<Flag, 4> flags{{
    {"--no-analytics", "record no events in this run", &AppOptions::noAnalytics},
    {"--background", "for the message bus: show push messages, no window", &AppOptions::background},
    {"--help", "this text", &AppOptions::help},
    {"--version", "the version", &AppOptions::version},
}};

template <typename Table> auto find(const Table &table, std::string_view name)
{
    return std::ranges::find(table, name, &Table::value_type::name);
}

} // namespace

Result<AppOptions> AppOptions::parse(std::span<const char *const> arguments)
{
    AppOptions options;
    std::vector<const char *> launchArguments;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (const auto flag = find(flags, argument); flag != flags.end()) {
            options.*(flag->member) = true;
            continue;
        }
        if (isLaunchArgument(argument)) {
            launchArguments.push_back(arguments[i]);
            continue;
        }
        // --name value, or --name=value
        const auto equals = argument.find('=');
        const auto option = find(valueOptions, argument.substr(0, equals));
        if (option == valueOptions.end())
            return usageError("there is no option " + std::string(argument) + "; --help lists them");
        if (equals == std::string_view::npos && ++i == arguments.size())
            return usageError(std::string(argument) + " needs a value: " + std::string(option->placeholder));
        option->read(options, equals == std::string_view::npos ? std::string_view(arguments[i])
                                                               : argument.substr(equals + 1));
    }
    options.launchSwitches = LaunchSwitches::in(launchArguments);
    return options;
}

std::string AppOptions::usage()
{
    static constexpr std::size_t column = 32;
    std::string text = "Usage: skyflare [OPTION]…\n"
                       "Opens the camera that photographs fireworks by itself.\n\n";
    const auto line = [&text](std::string name, std::string_view help) {
        name.resize(std::max(column, name.size() + 1), ' ');
        text.append("  ").append(name).append(help).append("\n");
    };
    for (const auto &option : valueOptions)
        line(std::string(option.name) + " " + std::string(option.placeholder), option.help);
    for (const auto &flag : flags)
        line(std::string(flag.name), flag.help);
    text += "\n\"simulated\" takes a size, a rate and a seed: simulated:1280x720@60,seed=7\n"
            "-FIRDebugEnabled and -FIRDebugDisabled, -FIRAnalyticsVerboseLoggingEnabled and …Disabled switch "
            "how\nthe recording of events tells of itself, for this run and later ones.\n"
            "\nExit status: 0 done, 1 it could not start, 2 a wrong command line.\n";
    return text;
}

} // namespace skyflare
