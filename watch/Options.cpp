#include "watch/Options.h"

#include "platform/base/CommandLine.h"

#include <array>
#include <iterator>
#include <string_view>
#include <vector>

namespace skyflare {
namespace {

Result<> readSeconds(std::string_view text, double least, double &seconds)
{
    constexpr double longest = 1e7; // well over a hundred days
    const auto value = numberWithin<double>(text, least, longest);
    if (!value)
        return usageError("a number of seconds, such as 30 or 2.5");
    seconds = *value;
    return {};
}

Result<> readSensitivity(Options &options, std::string_view text)
{
    options.sensitivity = sensitivityLevelNamed(text);
    if (!options.sensitivity)
        return usageError("one of ultra-low, very-low, low, medium, high, very-high, extreme");
    return {};
}

Result<> readFrequency(Options &options, std::string_view text)
{
    int photosASecond = 1;
    auto read = readWholeNumber(text, 1, std::ssize(frequencyRows), photosASecond);
    options.frequency = static_cast<CaptureFrequency>(photosASecond - 1);
    return read;
}

constexpr std::array<ValueOption<Options>, 9> valueOptions{{
    {"--camera", "auto|simulated|NAME", "which camera watches (auto: the best there is)",
     readText<&Options::camera>},
    {"--sensitivity", "LEVEL", "ultra-low, very-low, low, medium, high, very-high or extreme",
     readSensitivity},
    {"--frequency", "1..5", "photos a second at most", readFrequency},
    {"--arm-after", "SECONDS", "until a flash may take a photo (2)",
     [](Options &options, std::string_view text) { return readSeconds(text, 0, options.armAfterSeconds); }},
    {"--duration", "SECONDS", "stop after that time (of a film: film time)",
     [](Options &options, std::string_view text) {
         return readSeconds(text, 0.001, options.durationSeconds.emplace());
     }},
    {"--photos", "N", "stop after that many photos",
     [](Options &options, std::string_view text) {
         return readWholeNumber(text, 1, 1'000'000, options.photos.emplace());
     }},
    {"--data-dir", "DIR", "keep photos, settings and everything else under DIR",
     readText<&Options::dataFolder>},
    {"--export", "DIR", "also write each photo and a contact sheet as PNG into DIR",
     readText<&Options::exportFolder>},
    {"--frames-csv", "FILE", "write what was measured in each frame", readText<&Options::framesCsv>},
}};

constexpr std::array<Flag<Options>, 8> flags{{
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

constexpr OptionTables<Options> tables{valueOptions, flags};

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
        } else if (isLaunchArgument(argument)) {
            launchArguments.push_back(arguments[i]);
        } else {
            taken = tables.take(options, arguments, i);
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
    return "Usage: skyflare-watch [FILE] [OPTION]…\n"
           "Watches a camera, the simulated sky or a film, and keeps a photo of every burst.\n\n" +
           helpLine("FILE", "a film: gone through whole, every frame, as fast as it decodes") +
           tables.help() +
           "\nWithout --sensitivity and --frequency the stored settings hold; no option changes them.\n"
           "\"simulated\" takes a size, a rate and a seed: simulated:1280x720@60,seed=7\n"
           "\nEach run records a few events of its own (that it started, stopped, caught a photo) in a "
           "database\n"
           "on this machine. They are sent nowhere unless whoever set it up has named a host: "
           "--analytics-status\n"
           "says so. -FIRDebugEnabled and -FIRDebugDisabled, -FIRAnalyticsVerboseLoggingEnabled and "
           "…Disabled\n"
           "switch how the recording tells of itself, for this run and later ones.\n"
           "\nExit status: 0 done or stopped by Ctrl-C, 1 the source failed or there is no room for photos,\n"
           "2 a wrong command line.\n";
}

} // namespace skyflare
