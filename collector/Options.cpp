#include "collector/Options.h"

#include "platform/base/CommandLine.h"

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

namespace skyflare {

namespace {

constexpr std::int64_t mostBodyBytes = std::numeric_limits<std::int32_t>::max();

constexpr std::array<ValueOption<CollectorOptions>, 9> valueOptions{{
    {"--address", "ADDRESS", "listen there (127.0.0.1: this machine alone)",
     [](CollectorOptions &options, std::string_view text) -> Result<> {
         options.server.address = text;
         return {};
     }},
    {"--port", "N", "listen on that port (8765); 0: one that is free, which is printed",
     [](CollectorOptions &options, std::string_view text) {
         return readWholeNumber(text, 0, 65535, options.server.port);
     }},
    {"--output", "FILE", "append events to FILE (events.jsonl in the state folder)",
     readText<&CollectorOptions::output>},
    {"--state-dir", "DIR", "keep in DIR what has been seen (~/.local/state/skyflare/collector)",
     readText<&CollectorOptions::stateFolder>},
    {"--config", "FILE", "serve the JSON object in FILE to engines that ask for settings",
     readText<&CollectorOptions::settings>},
    {"--max-body", "BYTES", "of a request, packed and unpacked (12582912)",
     [](CollectorOptions &options, std::string_view text) {
         auto read = readWholeNumber(text, 1024, mostBodyBytes, options.server.bodyBytes);
         options.limits.batchBytes = options.server.bodyBytes;
         return read;
     }},
    {"--max-connections", "N", "at the same time (256)",
     [](CollectorOptions &options, std::string_view text) {
         return readWholeNumber(text, 1, 65536, options.server.connections);
     }},
    {"--request-timeout", "SECONDS", "for a request to come whole, and between two (30)",
     [](CollectorOptions &options, std::string_view text) {
         return readWholeNumber(text, 1, 3600, options.server.requestSeconds);
     }},
    {"--remember", "DAYS", "know a bundle again for so long (92: longer than engines keep any)",
     [](CollectorOptions &options, std::string_view text) {
         return readWholeNumber(text, 1, 36500, options.limits.rememberedDays);
     }},
}};

constexpr std::array<Flag<CollectorOptions>, 2> flags{{
    {"--help", "this text", &CollectorOptions::help},
    {"--version", "the version", &CollectorOptions::version},
}};

constexpr OptionTables<CollectorOptions> tables{valueOptions, flags};

} // namespace

Result<CollectorOptions> parseCollectorOptions(std::span<const char *const> arguments)
{
    CollectorOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (const auto taken = tables.take(options, arguments, i); !taken)
            return taken.error();
    }
    return options;
}

std::string collectorUsage()
{
    return "Usage: skyflare-collector [OPTION]…\n"
           "Takes measurements over HTTP, drops what has come before, and appends each event to a file as\n"
           "one JSON object a line.\n\n" +
           tables.help() +
           "\nSIGHUP: go on in a new file when the old one has been renamed, and read the settings anew.\n"
           "SIGTERM, SIGINT: finish what is in hand, say what was taken, and end.\n"
           "\nExit status: 0 ended by a signal, 1 it cannot start, 2 a wrong command line.\n";
}

} // namespace skyflare
