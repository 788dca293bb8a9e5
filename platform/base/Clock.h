#pragma once

namespace skyflare {

/// What time it is, by two clocks that are not the same. Any thread.
class Clock {
public:
    Clock() = default;
    Clock(const Clock &) = delete;
    Clock &operator=(const Clock &) = delete;
    virtual ~Clock() = default;

    /// Wall clock, seconds since 1970-01-01 00:00 UTC. May jump when somebody sets it.
    [[nodiscard]] virtual double secondsSince1970() const = 0;

    /// Seconds since the machine started, the time that it was suspended included. Never goes back.
    [[nodiscard]] virtual double secondsOfUptime() const = 0;
};

} // namespace skyflare
