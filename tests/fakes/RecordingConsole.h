#pragma once

#include "platform/base/Console.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace skyflare {

/// Keeps what was printed and reported, for a test to look at. Any thread.
class RecordingConsole final : public Console {
public:
    void printLine(std::string_view line) override { add(lines_, line); }
    void reportLine(std::string_view line) override { add(reports_, line); }

    /// Copies of what has come so far, in order.
    [[nodiscard]] std::vector<std::string> lines() const { return copyOf(lines_); }
    [[nodiscard]] std::vector<std::string> reports() const { return copyOf(reports_); }

    /// How often exactly this line was printed.
    [[nodiscard]] long count(std::string_view line) const
    {
        const std::scoped_lock lock(mutex_);
        return std::count(lines_.begin(), lines_.end(), line);
    }

    void clear()
    {
        const std::scoped_lock lock(mutex_);
        lines_.clear();
        reports_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    std::vector<std::string> reports_;

    void add(std::vector<std::string> &to, std::string_view line)
    {
        const std::scoped_lock lock(mutex_);
        to.emplace_back(line);
    }
    [[nodiscard]] std::vector<std::string> copyOf(const std::vector<std::string> &from) const
    {
        const std::scoped_lock lock(mutex_);
        return from;
    }
};

} // namespace skyflare
