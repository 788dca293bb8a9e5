#pragma once

#include "platform/base/Console.h"

#include <cstdio>
#include <mutex>
#include <string>

namespace skyflare {

/// The terminal: lines of commentary, and one line of progress that stays below them and is drawn anew.
///
/// Threads: any. Borrows its streams.
class WatchConsole final : public Console {
public:
    struct Streams {
        std::FILE *lines = stdout;     ///< commentary; null keeps it to itself
        std::FILE *answers = stdout;   ///< what was asked for: the summary, the list of cameras
        std::FILE *reports = stderr;   ///< what went wrong
        std::FILE *progress = nullptr; ///< a terminal; null where there is none
    };

    explicit WatchConsole(const Streams &streams) : streams_(streams) {}
    ~WatchConsole() override { setProgress({}); }

    void printLine(std::string_view line) override { write(streams_.lines, line); }
    void reportLine(std::string_view line) override { write(streams_.reports, line); }

    void printAnswer(std::string_view line) { write(streams_.answers, line); }

    /// Replaces the line of progress; empty takes it away.
    void setProgress(std::string line);

    [[nodiscard]] bool showsProgress() const { return streams_.progress != nullptr; }

private:
    const Streams streams_;
    std::mutex mutex_;
    std::string progress_;

    void write(std::FILE *stream, std::string_view line);
    void drawProgress();
};

} // namespace skyflare
