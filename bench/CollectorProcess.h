#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace skyflare::bench {

/// Keeps the calling thread, and those that it starts, on these cores.
void runOn(int firstCore, int lastCore);
[[nodiscard]] int lastCore();

/// The collector on the machine's last core, with all of its files in a folder. Whatever goes wrong ends the
/// program.
///
/// Threads: the one that makes it, which must outlive the collector.
class CollectorProcess {
public:
    /// @param settings  the JSON object that it serves; empty: none
    explicit CollectorProcess(std::filesystem::path folder, const std::string &settings = {});
    CollectorProcess(const CollectorProcess &) = delete;
    CollectorProcess &operator=(const CollectorProcess &) = delete;
    ~CollectorProcess();

    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] std::filesystem::path file() const { return folder_ / "events.jsonl"; }

    /// Ends it in order. @return what it says that it took
    std::string terminate();
    void rotate() const;
    /// In the file before the last rotation, if there is one: the present one may be empty.
    [[nodiscard]] double bytesALine() const;
    [[nodiscard]] std::uint64_t memory() const;
    /// Of the processor, so far.
    [[nodiscard]] double seconds() const;

private:
    std::filesystem::path folder_;
    pid_t pid_ = -1;
    int output_ = -1;
    int port_ = 0;

    [[nodiscard]] std::filesystem::path rotated() const { return folder_ / "events.1"; }
    [[nodiscard]] std::string readLine() const;
};

} // namespace skyflare::bench
