#include "watch/Options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <string_view>
#include <vector>

namespace skyflare {
namespace {

Error usageError(std::string message)
{
    return {.domain = "usage", .code = 2, .message = std::move(message)};
}

/// A whole text as a number within limits, or nothing.
template <typename Number> std::optional<Number> number(std::string_view text, Number least, Number most)
{
    Number value{};
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (problem != std::errc{} || end != text.data() + text.size() || !(value >= least && value <= most))
        return {};
    return value;
}

constexpr double longestSeconds = 1e7; // well over a hundred days

Result<> readSeconds(std::string_view option, std::string_view text, double least, double &seconds)
{
    const auto value = number<double>(text, least, longestSeconds);
    if (!value)
        return usageError(std::string(option) + " takes a number of seconds, such as 30 or 2.5, not \"" +
                          std::string(text) + "\"");
    seconds = *value;
    return {};
}

Result<> readSensitivity(Options &options, std::string_view text)
{
    options.sensitivity = sensitivityLevelNamed(text);
    if (!options.sensitivity)
        return usageError("--sensitivity takes one of ultra-low, very-low, low, medium, high, very-high, "
                          "extreme, not \"" +
                          std::string(text) + "\"");
    return {};
}

Result<> readFrequency(Options &options, std::string_view text)
{
    const auto photos = number<int>(text, 1, static_cast<int>(frequencyRows.size()));
    if (!photos)
        return usageError("--frequency takes 1 to 5, the photos a second, not \"" + std::string(text) + "\"");
    options.frequency = static_cast<CaptureFrequency>(*photos - 1);
    return {};
}

Result<> readDuration(Options &options, std::string_view text)
{
    return readSeconds("--duration", text, 0.001, options.durationSeconds.emplace());
}

Result<> readPhotos(Options &options, std::string_view text)
{
    options.photos = number<int>(text, 1, 1'000'000);
    if (!options.photos)
        return usageError("--photos takes a whole number from 1 on, not \"" + std::string(text) + "\"");
    return {};
}

template <auto member> Result<> readPath(Options &options, std::string_view text)
{
    (options.*member).emplace(text);
    return {};
}

/// An option and what reads its value; the help text stands in the order of the table.
struct ValueOption {
    std::string_view name;
    std::string_view placeholder;
    std::string_view help;
    Result<> (*read)(Options &, std::string_view);
};

constexpr std::array<ValueOption, 9> valueOptions{{
    {"--camera", "auto|simulated|NAME", "which camera watches (auto: the best there is)",
     [](Options &options, std::string_view text) -> Result<> {
         options.camera = text;
         return {};
     }},
    {"--sensitivity", "LEVEL", "ultra-low, very-low, low, medium, high, very-high or extreme",
     readSensitivity},
    {"--frequency", "1..5", "photos a second at most", readFrequency},
    {"--arm-after", "SECONDS", "until a flash may take a photo (2)",
     [](Options &options, std::string_view text) {
         return readSeconds("--arm-after", text, 0, options.armAfterSeconds);
     }},
    {"--duration", "SECONDS", "stop after that time (of a film: film time)", readDuration},
    {"--photos", "N", "stop after that many photos", readPhotos},
    {"--data-dir", "DIR", "keep photos, settings and everything else under DIR",
     readPath<&Options::dataFolder>},
    {"--export", "DIR", "also write each photo and a contact sheet as PNG into DIR",
     readPath<&Options::exportFolder>},
    {"--frames-csv", "FILE", "write what was measured in each frame", readPath<&Options::framesCsv>},
}};

struct Flag {
    std::string_view name;
    std::string_view help;
    bool Options::*member;
};

constexpr std::array<Flag, 8> flags{{
    {"--list-cameras", "list the cameras and end", &Options::listCameras},
    {"--analytics-show", "show the events that have been recorded, and end", &Options::analyticsShow},
    {"--analytics-status", "show what was counted, and the state of the record, and end",
     &Options::analyticsStatus},
    {"--no-analytics", "record no events in this run", &Options::noAnalytics},
    {"--json", "one JSON object a line on standard output, nothing else", &Options::json},
    {"--quiet", "no commentary and no progress; errors and the last line stay", &Options::quiet},
    {"--help", "this text", &Options::help},
    {"--version", "the version", &Options::version},
}};

template <typename Table> auto find(const Table &table, std::string_view name)
{
    return std::ranges::find(table, name, &Table::value_type::name);
}

Result<> takeFilm(Options &options, std::string_view argument)
{
    if (options.film)
        return usageError("one FILE at a time: \"" + std::string(argument) + "\" is a second one");
    if (argument.empty())
        return usageError("the name of the FILE is empty");
    options.film.emplace(argument);
    return {};
}

Result<> contradictions(const Options &options)
{
    if (options.film && options.camera != "auto")
        return usageError("either a FILE or --camera, not both");
    if (options.analyticsShow && options.analyticsStatus)
        return usageError("either --analytics-show or --analytics-status, not both");
    return {};
}

} // namespace

Result<Options> parseOptions(std::span<const char *const> arguments)
{
    Options options;
    std::vector<const char *> launchArguments;
    bool onlyFiles = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        Result<> taken;
        if (onlyFiles || !argument.starts_with('-')) {
            taken = takeFilm(options, argument);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (const auto flag = find(flags, argument); flag != flags.end()) {
            options.*(flag->member) = true;
        } else if (isLaunchArgument(argument)) {
            launchArguments.push_back(arguments[i]);
        } else {
            // --name value, or --name=value
            const auto equals = argument.find('=');
            const auto option = find(valueOptions, argument.substr(0, equals));
            if (option == valueOptions.end())
                return usageError("there is no option " + std::string(argument) + "; --help lists them");
            if (equals == std::string_view::npos && ++i == arguments.size())
                return usageError(std::string(argument) +
                                  " needs a value: " + std::string(option->placeholder));
            taken = option->read(options, equals == std::string_view::npos ? std::string_view(arguments[i])
                                                                           : argument.substr(equals + 1));
        }
        if (!taken)
            return taken.error();
    }
    if (const auto consistent = contradictions(options); !consistent)
        return consistent.error();
    options.launchSwitches = LaunchSwitches::in(launchArguments);
    return options;
}

std::string usage()
{
    static constexpr std::size_t column = 30;
    std::string text = "Usage: skyflare-watch [FILE] [OPTION]…\n"
                       "Watches a camera, the simulated sky or a film, and keeps a photo of every burst.\n\n";
    const auto line = [&text](std::string name, std::string_view help) {
        name.resize(std::max(column, name.size() + 1), ' ');
        text.append("  ").append(name).append(help).append("\n");
    };
    line("FILE", "a film: gone through whole, every frame, as fast as it decodes");
    for (const auto &option : valueOptions)
        line(std::string(option.name) + " " + std::string(option.placeholder), option.help);
    for (const auto &flag : flags)
        line(std::string(flag.name), flag.help);
    text += "\nWithout --sensitivity and --frequency the stored settings hold; no option changes them.\n"
            "\"simulated\" takes a size, a rate and a seed: simulated:1280x720@60,seed=7\n"
            "\nEach run records a few events of its own (that it started, stopped, caught a photo) in a "
            "database\n"
            "on this machine. Nothing of it is sent anywhere. -FIRDebugEnabled and -FIRDebugDisabled,\n"
            "-FIRAnalyticsVerboseLoggingEnabled and …Disabled switch how the recording tells of itself, for\n"
            "this run and later ones.\n"
            "\nExit status: 0 done or stopped by Ctrl-C, 1 the source failed, 2 a wrong command line.\n";
    return text;
}

} // namespace skyflare
