#pragma once

#include "analytics/model/APMMonitor.h"
#include "platform/base/Text.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace skyflare {

/// Ends the fuzzer, which then keeps its input, where something does not hold.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// Takes every message, and wants each to be one line of UTF-8.
class StrictMonitor final : public APMMonitor {
public:
    [[nodiscard]] bool isLogging(Level) const override { return true; }
    void log(Level, int messageCode, std::string_view message) override
    {
        require(messageCode >= 13000, "a message has a number");
        require(message.find('\n') == std::string_view::npos, "a message is one line");
        require(validUtf8(message) == message, "a message is UTF-8");
    }
};

} // namespace skyflare
