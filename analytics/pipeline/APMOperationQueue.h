#pragma once

#include "platform/base/DispatchQueue.h"

#include <cstddef>
#include <memory>

namespace skyflare {

inline constexpr const char *apmOperationQueueLabel = "APMAnalyticsOperationQueue";
inline constexpr const char *apmAnalyticsQueueLabel = "APMAnalyticsQueue";

/// Holds operations back until the engine has started, then runs them on a serial queue: one at a time, in
/// the order in which they were added. It has no thread of its own.
///
/// The target is woken only for the first operation of a row: its turn goes on until none is left, so that
/// adding to a busy queue costs a short lock and no wake-up. What else is handed to the target waits for that
/// turn to end. No lock is held while an operation or a hook runs or goes.
///
/// To end: closeThen(), and discard() once waiting has taken too long; all of it before the target is closed,
/// for work that a closed target drops is never heard of again. A queue that is let go of runs what it has
/// accepted, if it was resumed.
///
/// Threads: any, for all functions. Shares the target.
class APMOperationQueue {
public:
    using Operation = DispatchQueue::Work;
    /// Whether an operation is among those whose number is told when they are dropped.
    enum class Counted { No, Yes };
    /// What runs on the target beside the operations; empty: nothing.
    struct Hooks {
        Operation afterEach;     ///< operation
        Operation whenNoneWaits; ///< any more; what is added meanwhile still runs in the same turn
    };

    /// Suspended.
    explicit APMOperationQueue(std::shared_ptr<SerialQueue> target, Hooks hooks = {});

    /// @return false if the queue is closed; then `operation` never runs
    [[nodiscard]] bool addOperation(Operation operation, Counted counted = Counted::Yes);

    /// Lets the operations run; a second call changes nothing.
    void resume();

    /// Accepts nothing more. What was accepted still runs, and `closed` after it, on the target. Before
    /// resume() there is nothing yet that could take the operations: they are dropped, and `closed` runs.
    /// A second call changes nothing, and its `closed` never runs.
    /// @return how many counted operations were dropped
    std::size_t closeThen(Operation closed);

    /// Accepts nothing more and drops what has not begun, whatever closeThen() was to run included. The few
    /// operations that the target has in hand may still run.
    /// @return how many counted operations were dropped
    std::size_t discard();

private:
    struct State;
    std::shared_ptr<State> state_; ///< what waits for its turn on the target holds it too
};

} // namespace skyflare
