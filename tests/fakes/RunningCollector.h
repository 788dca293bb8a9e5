#pragma once

#include "platform/base/Files.h"
#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/RawClient.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace skyflare {

/// The built program on a folder of its own: any port, its state and "events.jsonl" in the folder.
class RunningCollector {
public:
    explicit RunningCollector(const std::filesystem::path &folder, std::vector<std::string> more = {})
        : process(command(folder, std::move(more)))
    {
        const std::string line = process.readLine().value_or("");
        const auto at = line.find(" port ");
        REQUIRE_MESSAGE(at != std::string::npos, "it does not start: " << process.errors());
        port = std::atoi(line.c_str() + at + 6);
    }

    int post(const Bytes &batch, const std::string &headers = {}) const
    {
        return RawClient(port).post(batch, headers);
    }

    /// Ends it in order. @return what it says that it took
    std::string terminate()
    {
        process.signal(SIGTERM);
        const auto lines = process.readAll();
        CHECK(process.wait() == 0);
        return lines.empty() ? "" : lines.back();
    }

    ChildProcess process;
    int port = 0;

private:
    static std::vector<std::string> command(const std::filesystem::path &folder,
                                            std::vector<std::string> more)
    {
        more.insert(more.begin(), {SKYFLARE_COLLECTOR, "--port", "0", "--state-dir", folder.string()});
        return more;
    }
};

/// Every line of a file of events; a line that is no JSON or has no end is a failure.
inline std::vector<nlohmann::json> linesIn(const std::filesystem::path &file)
{
    const auto bytes = readFile(file);
    REQUIRE(bytes);
    std::string_view rest(reinterpret_cast<const char *>(bytes->data()), bytes->size());
    std::vector<nlohmann::json> lines;
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        REQUIRE(end != std::string_view::npos);
        lines.push_back(nlohmann::json::parse(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
    return lines;
}

} // namespace skyflare
