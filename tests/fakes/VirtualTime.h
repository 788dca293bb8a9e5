#pragma once

#include "platform/base/Clock.h"
#include "platform/base/DispatchQueue.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace skyflare {

/// Stands behind queues and clock: nothing runs and no time passes until the test says so.
///
/// It is both the QueueFactory and the Clock that a test hands out. Work runs on the test's own thread,
/// in the order in which it is due, then in the order in which it was handed over; while it runs, the
/// clock stands at the moment it was due. `sync` first runs what the target had before it, then its work,
/// inline; a `sync` to a queue whose work is already on the stack would wait for ever and aborts. Code
/// outside any queue's work, the test itself, counts as running on main, but may `sync` to it.
///
/// Threads: one. Outlives what borrows it; queues that outlive it are closed.
class VirtualTime final : public QueueFactory, public Clock {
public:
    static constexpr double defaultSecondsSince1970 = 1'700'000'000; // 2023-11-14 22:13:20 UTC

    explicit VirtualTime(double startSecondsSince1970 = defaultSecondsSince1970);
    ~VirtualTime() override;

    /// Runs all work that is due until `duration` from now, whatever hands it over.
    void advance(std::chrono::nanoseconds duration);
    /// Runs all work that is due now, until there is none left. No time passes.
    void runUntilIdle();

    /// How much waits for a later moment.
    [[nodiscard]] std::size_t pendingTimers() const;

    [[nodiscard]] double secondsSince1970() const override;
    [[nodiscard]] double secondsOfUptime() const override;

    [[nodiscard]] SerialQueue &mainQueue();
    [[nodiscard]] DispatchQueue &globalUserInitiated() override;
    [[nodiscard]] std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override;

    /// Closes the main queue: what it has accepted still runs, timers not yet due are dropped.
    void closeMain();

    struct State; ///< shared with the queues

private:
    std::shared_ptr<State> state_;
    std::shared_ptr<SerialQueue> main_;
    std::shared_ptr<DispatchQueue> global_;
};

} // namespace skyflare
