#pragma once

#include "analytics/pipeline/WorkerTurns.h"
#include "platform/base/Clock.h"

#include <memory>
#include <optional>

namespace skyflare {

/// A moment at which something is to be done on the engine's worker; it may be moved, and cancelled.
///
/// It is by uptime, and so does not heed who sets the clock. A queue's timer cannot be taken back, so this
/// keeps to one: one that comes too early waits on. Only an earlier moment needs another.
///
/// Threads: the engine's worker. Borrows clock and worker; what a timer has in hand outlives it.
class Alarm {
public:
    Alarm(WorkerTurns &worker, const Clock &clock, WorkerTurns::Work ring);
    Alarm(const Alarm &) = delete;
    Alarm &operator=(const Alarm &) = delete;
    ~Alarm();

    /// Rings once, in a turn of its own, when uptime has reached `due`; in place of what was set before.
    /// @param due  seconds of uptime
    void set(double due);
    void cancel();
    /// Seconds of uptime; nothing: it is not set.
    [[nodiscard]] std::optional<double> due() const { return due_; }
    /// Rings if the moment has passed: for after the machine has slept, which timers do not notice.
    void check();

private:
    WorkerTurns &worker_;
    const Clock &clock_;
    const WorkerTurns::Work ring_;
    std::optional<double> due_;
    std::optional<double> timerDue_; ///< of the one timer that counts; seconds of uptime
    std::shared_ptr<Alarm *> self_;  ///< null in a timer's hands once the alarm has gone

    void startTimer();
    void timerFired(double timerDue);
};

} // namespace skyflare
