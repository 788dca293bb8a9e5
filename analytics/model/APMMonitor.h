#pragma once

#include <string>
#include <string_view>

namespace skyflare {

/// The engine's log: one line a message, with a level and the number of the message.
///
/// Threads: any.
class APMMonitor {
public:
    enum class Level { Error, Warning, Info, Debug };

    APMMonitor() = default;
    APMMonitor(const APMMonitor &) = delete;
    APMMonitor &operator=(const APMMonitor &) = delete;
    virtual ~APMMonitor() = default;

    /// Whether a message of that level goes anywhere: nobody need put one together that does not.
    [[nodiscard]] virtual bool isLogging(Level level) const = 0;
    /// @param messageCode  names the place in the program, the same from version to version: 13001
    virtual void log(Level level, int messageCode, std::string_view message) = 0;
};

} // namespace skyflare
