#pragma once

#include "platform/base/DispatchQueue.h"

#include <chrono>

namespace skyflare {

/// The engine's worker, as its parts see it that have more to do than one call's work.
///
/// Threads: any. After the engine's end both drop what they are given.
class WorkerTurns {
public:
    using Work = DispatchQueue::Work;

    WorkerTurns() = default;
    WorkerTurns(const WorkerTurns &) = delete;
    WorkerTurns &operator=(const WorkerTurns &) = delete;
    virtual ~WorkerTurns() = default;

    /// Runs `work` on the worker, behind what waits there already.
    virtual void perform(Work work) = 0;
    /// The same, once `delay` has passed; the time that the machine sleeps does not count.
    virtual void performAfter(std::chrono::nanoseconds delay, Work work) = 0;
    /// For answers of a transport; what runs there goes on with perform().
    [[nodiscard]] virtual DispatchQueue &queue() = 0;
};

} // namespace skyflare
