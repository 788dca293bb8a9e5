#pragma once

#include "tests/fakes/ChildProcess.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace skyflare {

/// What a program asks of the network from its start to its end, in all its threads and children, seen from
/// outside by strace.
class NetworkTrace {
public:
    explicit NetworkTrace(std::filesystem::path file) : file_(std::move(file)) {}

    /// What stands before the command line of the program.
    [[nodiscard]] std::vector<std::string> command() const
    {
        return {
            "/usr/bin/env", "ASAN_OPTIONS=detect_leaks=0", // which traces, too: it cannot be traced itself
            "strace",       "-f",
            "-qq",          "--seccomp-bpf",
            "-e",           "trace=network",
            "-o",           file_};
    }

    /// The calls that may lead to another machine, or ask somebody for its address. Buses, displays and what
    /// the program's own threads say to each other are not among them.
    [[nodiscard]] std::vector<std::string> callsOutside() const
    {
        constexpr std::array<std::string_view, 5> outside{"AF_INET", "AF_NETLINK", "AF_PACKET", "/nscd/",
                                                          "/resolve/"};
        std::vector<std::string> calls;
        std::ifstream trace(file_);
        for (std::string line; std::getline(trace, line);) {
            if (std::ranges::any_of(outside, [&](auto word) { return line.find(word) != line.npos; }))
                calls.push_back(line);
        }
        return calls;
    }

    /// To the program itself: strace does not pass a signal on. @return whether there is one
    [[nodiscard]] static bool signal(const ChildProcess &traced, int number)
    {
        const std::string pid = std::to_string(traced.pid());
        pid_t program = 0;
        std::ifstream("/proc/" + pid + "/task/" + pid + "/children") >> program;
        return program > 0 && ::kill(program, number) == 0;
    }

private:
    const std::filesystem::path file_;
};

} // namespace skyflare
