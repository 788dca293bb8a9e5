#pragma once

#include "analytics/upload/UploadSchedule.h"
#include "platform/base/UserDefaults.h"

#include <cstdint>

namespace skyflare {

/// What the engine keeps between runs about its uploads, beside the rest of its configuration: keys that
/// begin with "/mipeme/measurement/". What nobody can have meant reads as 0.
///
/// A setter writes the file, once for each value that it changes. Threads: one at a time. Borrows its
/// defaults.
class UploadRecord {
public:
    /// @param defaults  those of the engine's configuration
    explicit UploadRecord(UserDefaults &defaults) : defaults_(defaults) {}

    // Seconds since 1970; 0: never.

    [[nodiscard]] double lastSuccess() const;
    [[nodiscard]] double lastFailure() const;
    [[nodiscard]] double lastBackoff() const;
    /// Milliseconds since 1970, of the newest event that has ever been uploaded; 0: none has.
    [[nodiscard]] std::int64_t lastUploadedEventMilliseconds() const;
    /// Seconds of uptime; 0: they are not.
    [[nodiscard]] double suspendedUntil() const;

    /// Clears failure and back-off.
    /// @param now, newestEvent  seconds since 1970
    void didSucceed(double now, double newestEvent);
    void didFail(double now);
    /// A failure by which the server says that it takes nothing for now.
    void didBackOff(double now);
    void suspend(double untilUptime);
    /// After a reset: what was uploaded was another installation's. The back-off is the server's, and stays.
    void reset();

private:
    UserDefaults &defaults_;

    [[nodiscard]] double time(std::string_view key) const;
    void setTime(double seconds, std::string_view key);
};

} // namespace skyflare
