#pragma once

#include "platform/base/UserDefaults.h"

#include <cstdint>
#include <optional>

namespace skyflare {

/// What is known of sessions from one run to the next. What stands in the file and makes no sense counts as
/// missing.
///
/// A setter writes the file; but activity that is a second old or less is known here alone, so that many
/// events in a row do not make a disk busy.
///
/// Threads: the engine's worker. Borrows its defaults.
class SessionRecord {
public:
    /// @param defaults  the engine's configuration
    explicit SessionRecord(UserDefaults &defaults);

    /// After how long without activity a new session begins, as the app chose it, in seconds; nothing: it did
    /// not.
    [[nodiscard]] std::optional<double> sessionTimeoutInterval() const;
    void setSessionTimeoutInterval(double seconds);

    /// Of the first session 1; 0: there was none.
    [[nodiscard]] std::int64_t sessionNumber() const { return sessionNumber_; }
    /// When the session began, in whole seconds since 1970.
    [[nodiscard]] std::int64_t sessionID() const { return sessionID_; }
    /// Seconds since 1970.
    [[nodiscard]] double lastActivityTime() const { return lastActivityTime_; }
    void setLastActivityTime(double secondsSince1970);

    /// The next session, whose activity begins now.
    void beginSession(double secondsSince1970);
    /// As if there never had been a session. What the app chose stays.
    void wipe();

private:
    UserDefaults &defaults_;
    std::int64_t sessionNumber_;
    std::int64_t sessionID_;
    double lastActivityTime_;
    double writtenActivityTime_; ///< as it stands in the file
};

} // namespace skyflare
