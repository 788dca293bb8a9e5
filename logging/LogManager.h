#pragma once

#include "platform/base/Clock.h"
#include "platform/base/Console.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace skyflare {

/// What the app tells its event log.
enum class LogEvent {
    StartCapture,
    StopCapture,
    CatchPhoto,
    ButtonTapped,
    PhotoSaved,
    PhotoAutoSaved,
    AttemptToSavePhoto,
};

/// The name under which an event is logged: "start_capture" and so on.
std::string_view eventName(LogEvent event);

/// A parameter's value; numbers keep the width in which the caller measured them.
using LogValue = std::variant<std::string, std::int64_t, float, double>;
using LogParameters = std::map<std::string, LogValue>;

/// The app's one door to the event log: names the event, stamps it with the local time, hands it to the
/// measurement engine, if there is one, and echoes it on the console.
///
/// Threads: called on main, which never waits for the engine. Borrows its clock and console, which must
/// outlive it.
class LogManager {
public:
    LogManager(const Clock &clock, Console &console) : clock_(clock), console_(console) {}

    /// A "timestamp" among `parameters` replaces the generated one.
    void logEvent(LogEvent event, const LogParameters &parameters = {});

private:
    const Clock &clock_;
    Console &console_;

    [[nodiscard]] std::string timestamp() const;
};

} // namespace skyflare
