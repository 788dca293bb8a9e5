#include "collector/Options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

namespace skyflare {

namespace {

Error usageError(std::string message)
{
    return {.domain = "usage", .code = 2, .message = std::move(message)};
}

Result<std::int64_t> wholeNumber(std::string_view option, std::string_view text, std::int64_t least,
                                 std::int64_t most)
{
    std::int64_t value = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (problem != std::errc{} || end != text.data() + text.size() || value < least || value > most)
        return usageError(std::string(option) + " takes a whole number from " + std::to_string(least) +
                          " to " + std::to_string(most) + ", not \"" + std::string(text) + "\"");
    return value;
}

/// An option and what takes its value: a text, or a number within bounds.
struct ValueOption {
    std::string_view name;
    std::string_view placeholder;
    std::string_view help;
    void (*setText)(CollectorOptions &, std::string_view) = nullptr;
    void (*setNumber)(CollectorOptions &, std::int64_t) = nullptr;
    std::int64_t least = 0;
    std::int64_t most = 0;
};

constexpr std::int64_t mostBodyBytes = std::numeric_limits<std::int32_t>::max();

constexpr std::array<ValueOption, 9> valueOptions{{
    {.name = "--address",
     .placeholder = "ADDRESS",
     .help = "listen there (127.0.0.1: this machine alone)",
     .setText = [](CollectorOptions &options, std::string_view text) { options.server.address = text; }},
    {.name = "--port",
     .placeholder = "N",
     .help = "listen on that port (8765); 0: one that is free, which is printed",
     .setNumber = [](CollectorOptions &options,
                     std::int64_t number) { options.server.port = static_cast<std::uint16_t>(number); },
     .most = 65535},
    {.name = "--output",
     .placeholder = "FILE",
     .help = "append events to FILE (events.jsonl in the state folder)",
     .setText = [](CollectorOptions &options, std::string_view text) { options.output.emplace(text); }},
    {.name = "--state-dir",
     .placeholder = "DIR",
     .help = "keep in DIR what has been seen (~/.local/state/skyflare/collector)",
     .setText = [](CollectorOptions &options, std::string_view text) { options.stateFolder.emplace(text); }},
    {.name = "--config",
     .placeholder = "FILE",
     .help = "serve the JSON object in FILE to engines that ask for settings",
     .setText = [](CollectorOptions &options, std::string_view text) { options.settings = text; }},
    {.name = "--max-body",
     .placeholder = "BYTES",
     .help = "of a request, packed and unpacked (12582912)",
     .setNumber =
         [](CollectorOptions &options, std::int64_t number) {
             options.server.bodyBytes = static_cast<std::size_t>(number);
             options.limits.batchBytes = static_cast<std::size_t>(number);
         },
     .least = 1024,
     .most = mostBodyBytes},
    {.name = "--max-connections",
     .placeholder = "N",
     .help = "at the same time (256)",
     .setNumber = [](CollectorOptions &options,
                     std::int64_t number) { options.server.connections = static_cast<unsigned>(number); },
     .least = 1,
     .most = 65536},
    {.name = "--request-timeout",
     .placeholder = "SECONDS",
     .help = "for a request to come whole, and between two (30)",
     .setNumber = [](CollectorOptions &options,
                     std::int64_t number) { options.server.requestSeconds = static_cast<double>(number); },
     .least = 1,
     .most = 3600},
    {.name = "--remember",
     .placeholder = "DAYS",
     .help = "know a bundle again for so long (92: longer than engines keep any)",
     .setNumber = [](CollectorOptions &options,
                     std::int64_t number) { options.limits.rememberedDays = number; },
     .least = 1,
     .most = 36500},
}};

struct Flag {
    std::string_view name;
    std::string_view help;
    bool CollectorOptions::*member;
};

constexpr std::array<Flag, 2> flags{{
    {"--help", "this text", &CollectorOptions::help},
    {"--version", "the version", &CollectorOptions::version},
}};

Result<> takeValue(CollectorOptions &options, const ValueOption &option, std::string_view text)
{
    if (option.setText) {
        if (text.empty())
            return usageError(std::string(option.name) +
                              " needs a value: " + std::string(option.placeholder));
        option.setText(options, text);
        return {};
    }
    const auto number = wholeNumber(option.name, text, option.least, option.most);
    if (!number)
        return number.error();
    option.setNumber(options, *number);
    return {};
}

} // namespace

Result<CollectorOptions> parseCollectorOptions(std::span<const char *const> arguments)
{
    CollectorOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (const auto flag = std::ranges::find(flags, argument, &Flag::name); flag != flags.end()) {
            options.*(flag->member) = true;
            continue;
        }
        // --name value, or --name=value
        const auto equals = argument.find('=');
        const auto option = std::ranges::find(valueOptions, argument.substr(0, equals), &ValueOption::name);
        if (option == valueOptions.end())
            return usageError("there is no option " + std::string(argument) + "; --help lists them");
        if (equals == std::string_view::npos && ++i == arguments.size())
            return usageError(std::string(argument) + " needs a value: " + std::string(option->placeholder));
        const std::string_view text =
            equals == std::string_view::npos ? std::string_view(arguments[i]) : argument.substr(equals + 1);
        if (const auto taken = takeValue(options, *option, text); !taken)
            return taken.error();
    }
    return options;
}

std::string collectorUsage()
{
    static constexpr std::size_t column = 30;
    std::string text =
        "Usage: skyflare-collector [OPTION]…\n"
        "Takes measurements over HTTP, drops what has come before, and appends each event to a file as\n"
        "one JSON object a line.\n\n";
    const auto line = [&text](std::string name, std::string_view help) {
        name.resize(std::max(column, name.size() + 1), ' ');
        text.append("  ").append(name).append(help).append("\n");
    };
    for (const auto &option : valueOptions)
        line(std::string(option.name) + " " + std::string(option.placeholder), option.help);
    for (const auto &flag : flags)
        line(std::string(flag.name), flag.help);
    text += "\nSIGHUP: go on in a new file when the old one has been renamed, and read the settings anew.\n"
            "SIGTERM, SIGINT: finish what is in hand, say what was taken, and end.\n"
            "\nExit status: 0 ended by a signal, 1 it cannot start, 2 a wrong command line.\n";
    return text;
}

} // namespace skyflare
