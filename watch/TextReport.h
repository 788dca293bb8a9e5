#pragma once

#include "platform/base/Clock.h"
#include "watch/WatchConsole.h"
#include "watch/WatchReport.h"

namespace skyflare {

/// A run in words, with a line of progress on a terminal: for a film the time in it and the speed, for a
/// camera the light power as a moving bar.
///
/// Borrows its console and clock; the clock is the real one.
class TextReport final : public WatchReport {
public:
    enum class Source { Camera, Film };

    TextReport(WatchConsole &console, const Clock &clock, Source source);

    void started(const SessionEvent &event) override;
    void lightPower(double brightness, std::chrono::nanoseconds streamTime) override;
    void status(const std::string &text) override;
    void photo(const Photo &photo) override;
    void lost(const SessionEvent &event) override;
    void summary(const Summary &summary) override;

private:
    WatchConsole &console_;
    const Clock &clock_;
    const Source source_;
    const bool unicode_; ///< whether the terminal shows more than ASCII
    double startedAt_;   ///< seconds of uptime
    double drawnAt_ = 0; ///< seconds of uptime
    std::int64_t photos_ = 0;

    [[nodiscard]] std::string bar(double brightness) const;
};

} // namespace skyflare
