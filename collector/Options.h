#pragma once

#include "collector/Collector.h"
#include "collector/CollectorServer.h"
#include "platform/base/Result.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace skyflare {

/// What the command line of skyflare-collector asks for. Nothing stands where an option was not given.
struct CollectorOptions {
    CollectorServer::Options server;
    Collector::Limits limits;
    std::optional<std::filesystem::path> output;
    std::optional<std::filesystem::path> stateFolder;
    std::filesystem::path settings;
    bool help = false;
    bool version = false;
};

/// Reads the arguments that follow the program's name. The error is one line that says what would be right.
Result<CollectorOptions> parseCollectorOptions(std::span<const char *const> arguments);

/// What --help prints.
std::string collectorUsage();

} // namespace skyflare
