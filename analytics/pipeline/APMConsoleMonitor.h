#pragma once

#include "analytics/model/APMMonitor.h"
#include "analytics/pipeline/LaunchArguments.h"
#include "analytics/pipeline/RepeatedLines.h"
#include "platform/base/Clock.h"
#include "platform/base/Console.h"

namespace skyflare {

/// The engine's log on the console: "<AppMeasurement> error 13001: Event name is required and can't be nil".
///
/// Errors and warnings are always reported, because they tell of data that is lost or of a program that is
/// wrong, and because a program that is told to be quiet, or whose standard output somebody reads by machine,
/// still shows reports; the same one again once a minute at most. Info and debug lines are commentary,
/// printed with verbose logging alone. Whatever bytes a message has, it becomes one line of valid UTF-8
/// without control characters.
///
/// Threads: any. Borrows its console and clock, which must outlive it.
class APMConsoleMonitor final : public APMMonitor {
public:
    APMConsoleMonitor(Console &console, const Clock &clock, MonitorModes modes)
        : console_(console), clock_(clock), modes_(modes)
    {
    }

    [[nodiscard]] bool isDebugModeEnabled() const { return modes_.debugMode; }

    [[nodiscard]] bool isLogging(Level level) const override;
    void log(Level level, int messageCode, std::string_view message) override;

private:
    Console &console_;
    const Clock &clock_;
    const MonitorModes modes_;
    RepeatedLines problems_;
};

} // namespace skyflare
