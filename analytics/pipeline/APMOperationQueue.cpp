#include "analytics/pipeline/APMOperationQueue.h"

#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace skyflare {

namespace {

constexpr std::size_t takenAtOnce = 64; ///< enough that the lock costs nothing, few enough to hold it shortly

} // namespace

struct APMOperationQueue::State : std::enable_shared_from_this<State> {
    explicit State(std::shared_ptr<SerialQueue> queue) : target(std::move(queue)) {}

    const std::shared_ptr<SerialQueue> target;
    std::mutex mutex;
    // A deque, not a vector: with many waiting, adding one must never move all of them.
    std::deque<Operation> waiting;
    bool isSuspended = true;
    bool isClosed = false;
    bool hasClosedOperation = false; ///< the last of those waiting is what closeThen() was given
    bool hasTurn = false;            ///< a turn runs on the target, or waits there

    /// With the mutex held. Whether the caller has to post a turn once it has let go of the mutex.
    [[nodiscard]] bool takesTurn()
    {
        const bool takes = !isSuspended && !hasTurn && !waiting.empty();
        hasTurn = hasTurn || takes;
        return takes;
    }
    void postTurn()
    {
        target->async([self = shared_from_this()] { self->runTurn(); });
    }

    void runTurn();
    [[nodiscard]] bool take(std::vector<Operation> &taken);
};

void APMOperationQueue::State::runTurn()
{
    std::vector<Operation> taken;
    taken.reserve(takenAtOnce);
    while (take(taken)) {
        for (Operation &operation : taken) {
            operation();
            operation = nullptr; // what it held goes before the next one runs
        }
        taken.clear();
    }
}

/// False if there is none: then this turn is over.
bool APMOperationQueue::State::take(std::vector<Operation> &taken)
{
    const std::scoped_lock lock(mutex);
    while (!waiting.empty() && taken.size() < takenAtOnce) {
        taken.push_back(std::move(waiting.front()));
        waiting.pop_front();
    }
    hasTurn = !taken.empty();
    hasClosedOperation = hasClosedOperation && !waiting.empty();
    return hasTurn;
}

APMOperationQueue::APMOperationQueue(std::shared_ptr<SerialQueue> target)
    : state_(std::make_shared<State>(std::move(target)))
{
}

bool APMOperationQueue::addOperation(Operation operation)
{
    bool takesTurn = false;
    {
        const std::scoped_lock lock(state_->mutex);
        if (state_->isClosed)
            return false;
        state_->waiting.push_back(std::move(operation));
        takesTurn = state_->takesTurn();
    }
    if (takesTurn)
        state_->postTurn();
    return true;
}

void APMOperationQueue::resume()
{
    bool takesTurn = false;
    {
        const std::scoped_lock lock(state_->mutex);
        state_->isSuspended = false;
        takesTurn = state_->takesTurn();
    }
    if (takesTurn)
        state_->postTurn();
}

std::size_t APMOperationQueue::closeThen(Operation closed)
{
    std::deque<Operation> dropped; // goes after the lock: what an operation holds may call back
    bool takesTurn = false;
    {
        const std::scoped_lock lock(state_->mutex);
        if (state_->isClosed)
            return 0;
        state_->isClosed = true;
        if (std::exchange(state_->isSuspended, false))
            dropped.swap(state_->waiting);
        state_->waiting.push_back(std::move(closed));
        state_->hasClosedOperation = true;
        takesTurn = state_->takesTurn();
    }
    if (takesTurn)
        state_->postTurn();
    return dropped.size();
}

std::size_t APMOperationQueue::discard()
{
    std::deque<Operation> dropped; // as above
    const std::scoped_lock lock(state_->mutex);
    state_->isClosed = true;
    dropped.swap(state_->waiting);
    const bool droppedClosed = std::exchange(state_->hasClosedOperation, false);
    return dropped.size() - (droppedClosed ? 1 : 0);
}

} // namespace skyflare
