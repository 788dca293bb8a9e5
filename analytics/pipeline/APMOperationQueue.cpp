#include "analytics/pipeline/APMOperationQueue.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace skyflare {

namespace {

constexpr std::size_t takenAtOnce = 64; ///< enough that the lock costs nothing, few enough to hold it shortly

} // namespace

struct APMOperationQueue::State : std::enable_shared_from_this<State> {
    struct Waiting {
        Operation operation;
        Counted counted;
    };
    // A deque, not a vector: with many waiting, adding one must never move all of them.
    using Row = std::deque<Waiting>;

    State(std::shared_ptr<SerialQueue> queue, Hooks given) : target(std::move(queue)), hooks(std::move(given))
    {
    }

    const std::shared_ptr<SerialQueue> target;
    const Hooks hooks;
    std::mutex mutex;
    Row waiting;
    bool isSuspended = true;
    bool isClosed = false;
    bool hasTurn = false; ///< a turn runs on the target, or waits there

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
    void runTaken(std::vector<Operation> &taken) const;
    [[nodiscard]] bool take(std::vector<Operation> &taken);
    [[nodiscard]] bool endsTurn();
    [[nodiscard]] static std::size_t countOf(const Row &dropped);
};

void APMOperationQueue::State::runTurn()
{
    std::vector<Operation> taken;
    taken.reserve(takenAtOnce);
    do {
        while (take(taken))
            runTaken(taken);
        if (hooks.whenNoneWaits)
            hooks.whenNoneWaits();
    } while (!endsTurn());
}

void APMOperationQueue::State::runTaken(std::vector<Operation> &taken) const
{
    for (Operation &operation : taken) {
        operation();
        operation = nullptr; // what it held goes before the next one runs
        if (hooks.afterEach)
            hooks.afterEach();
    }
    taken.clear();
}

/// False if there is none.
bool APMOperationQueue::State::take(std::vector<Operation> &taken)
{
    const std::scoped_lock lock(mutex);
    while (!waiting.empty() && taken.size() < takenAtOnce) {
        taken.push_back(std::move(waiting.front().operation));
        waiting.pop_front();
    }
    return !taken.empty();
}

/// Not if something was added while whenNoneWaits ran.
bool APMOperationQueue::State::endsTurn()
{
    const std::scoped_lock lock(mutex);
    hasTurn = !waiting.empty();
    return !hasTurn;
}

std::size_t APMOperationQueue::State::countOf(const Row &dropped)
{
    return static_cast<std::size_t>(std::ranges::count(dropped, Counted::Yes, &Waiting::counted));
}

APMOperationQueue::APMOperationQueue(std::shared_ptr<SerialQueue> target, Hooks hooks)
    : state_(std::make_shared<State>(std::move(target), std::move(hooks)))
{
}

bool APMOperationQueue::addOperation(Operation operation, Counted counted)
{
    bool takesTurn = false;
    {
        const std::scoped_lock lock(state_->mutex);
        if (state_->isClosed)
            return false;
        state_->waiting.push_back({std::move(operation), counted});
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
    State::Row dropped; // goes after the lock: what an operation holds may call back
    bool takesTurn = false;
    {
        const std::scoped_lock lock(state_->mutex);
        if (state_->isClosed)
            return 0;
        state_->isClosed = true;
        if (std::exchange(state_->isSuspended, false))
            dropped.swap(state_->waiting);
        state_->waiting.push_back({std::move(closed), Counted::No});
        takesTurn = state_->takesTurn();
    }
    if (takesTurn)
        state_->postTurn();
    return State::countOf(dropped);
}

std::size_t APMOperationQueue::discard()
{
    State::Row dropped; // as above
    {
        const std::scoped_lock lock(state_->mutex);
        state_->isClosed = true;
        dropped.swap(state_->waiting);
    }
    return State::countOf(dropped);
}

} // namespace skyflare
