#pragma once

#include "platform/base/Console.h"

#include <mutex>

namespace skyflare {

/// Prints to file descriptors, each line whole and at once. What nobody reads any more is dropped.
///
/// Ignores SIGPIPE for the whole process: `… | head -1` must not kill a run in the middle of a photo.
///
/// Threads: any. Borrows the descriptors.
class StandardConsole final : public Console {
public:
    /// Lines go to `output`, reports to `errorOutput`; they may be the same.
    explicit StandardConsole(int output = 1, int errorOutput = 2);

    void printLine(std::string_view line) override;
    void reportLine(std::string_view line) override;

private:
    const int output_;
    const int errorOutput_;
    std::mutex mutex_;

    void write(int to, std::string_view line);
};

} // namespace skyflare
