#pragma once

#include "analytics/model/APMMonitor.h"

#include <string>
#include <string_view>

namespace skyflare {

/// What the engine says in its log, with the number of the message. Behind a text that names something comes
/// that, after a colon; an empty text is that alone.
struct LogText {
    APMMonitor::Level level;
    int code;
    std::string_view text;
};

/// Nothing is put together for a level that goes nowhere. Threads: any.
inline void writeLog(APMMonitor &monitor, const LogText &text, std::string_view detail = {})
{
    if (!monitor.isLogging(text.level))
        return;
    std::string line(text.text);
    if (!detail.empty())
        line.append(line.empty() ? "" : ": ").append(detail);
    monitor.log(text.level, text.code, line);
}

} // namespace skyflare
