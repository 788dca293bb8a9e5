#pragma once

#include "analytics/model/APMMonitor.h"

#include <string>
#include <utility>
#include <vector>

namespace skyflare {

/// Keeps what the engine logged. One thread at a time.
class RecordingMonitor final : public APMMonitor {
public:
    struct Line {
        Level level;
        int messageCode;
        std::string message;
        bool operator==(const Line &) const = default;
    };
    std::vector<Line> lines;

    [[nodiscard]] bool isLogging(Level) const override { return true; }
    void log(Level level, int messageCode, std::string_view message) override
    {
        lines.push_back({level, messageCode, std::string(message)});
    }
    /// The lines since the last call.
    std::vector<Line> takeLines() { return std::exchange(lines, {}); }
};

} // namespace skyflare
