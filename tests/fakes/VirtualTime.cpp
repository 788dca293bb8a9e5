#include "tests/fakes/VirtualTime.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace skyflare {

namespace {

using std::chrono::nanoseconds;

/// What the work that waits knows of its queue, which may be gone by then.
struct QueueState {
    bool closed = false;
};

struct Item {
    std::shared_ptr<QueueState> queue;
    DispatchQueue::Work work;
};

[[noreturn]] void die(const std::string &message)
{
    std::fprintf(stderr, "VirtualTime: %s\n", message.c_str());
    std::abort();
}

} // namespace

struct VirtualTime::State {
    using Place = std::pair<nanoseconds, std::uint64_t>; ///< when it is due; how many came before it

    nanoseconds now{}; ///< since this time began
    double secondsSince1970AtStart = 0;
    std::uint64_t nextNumber = 0;
    std::map<Place, Item> waiting;
    std::vector<const QueueState *> stack; ///< whose work is running, innermost last
    bool ended = false;

    void add(nanoseconds delay, Item item)
    {
        if (!ended && !item.queue->closed)
            waiting.emplace(Place{now + std::max(delay, nanoseconds{0}), nextNumber++}, std::move(item));
    }

    /// Runs the first item that is due until `until`, of one queue or of any. False if there is none.
    bool runNext(nanoseconds until, const QueueState *of, std::uint64_t before)
    {
        auto found = waiting.begin();
        while (found != waiting.end() &&
               (found->first.second >= before || (of && found->second.queue.get() != of)))
            ++found;
        if (found == waiting.end() || found->first.first > until)
            return false;
        now = std::max(now, found->first.first);
        const Item item = std::move(found->second);
        waiting.erase(found);
        run(item.queue.get(), item.work);
        return true;
    }

    void runAll(nanoseconds until)
    {
        if (!stack.empty())
            die("advanced from within a queue's work");
        while (runNext(until, nullptr, UINT64_MAX))
            ;
        now = until;
    }

    void run(const QueueState *queue, const DispatchQueue::Work &work)
    {
        struct Popped {
            std::vector<const QueueState *> &stack;
            ~Popped() { stack.pop_back(); }
        };
        stack.push_back(queue);
        const Popped popped{stack};
        work();
    }

    void close(QueueState &queue)
    {
        queue.closed = true;
        std::vector<Item> dropped; // ends after the map is whole again: its captures may call back
        for (auto place = waiting.begin(); place != waiting.end();) {
            const bool drops = place->second.queue.get() == &queue && place->first.first > now;
            if (drops)
                dropped.push_back(std::move(place->second));
            place = drops ? waiting.erase(place) : std::next(place);
        }
    }
};

namespace {

using State = VirtualTime::State;

/// The part that serial and concurrent queues share.
template <typename Base> class VirtualQueue : public Base {
public:
    VirtualQueue(std::string label, std::shared_ptr<State> time)
        : Base(std::move(label)), time_(std::move(time))
    {
    }
    VirtualQueue(const VirtualQueue &) = delete;
    VirtualQueue &operator=(const VirtualQueue &) = delete;
    ~VirtualQueue() override { time_->close(*queue_); }

    void async(DispatchQueue::Work work) override { time_->add(nanoseconds{0}, {queue_, std::move(work)}); }
    void asyncAfter(nanoseconds delay, DispatchQueue::Work work) override
    {
        time_->add(delay, {queue_, std::move(work)});
    }
    bool sync(const DispatchQueue::Work &work) override
    {
        const auto time = time_; // the work may let go of this queue
        const auto queue = queue_;
        if (std::find(time->stack.begin(), time->stack.end(), queue.get()) != time->stack.end())
            die("sync to " + this->label() + ", which is already on the stack, would wait for ever");
        if (time->ended || queue->closed)
            return false;
        const std::uint64_t before = time->nextNumber;
        while (time->runNext(time->now, queue.get(), before))
            ;
        if (queue->closed)
            return false;
        time->run(queue.get(), work);
        return true;
    }
    void close() { time_->close(*queue_); }

protected:
    /// Whether its work is running; `outside` where no queue's is.
    [[nodiscard]] bool isInnermost(bool outside) const
    {
        return time_->stack.empty() ? outside : time_->stack.back() == queue_.get();
    }

private:
    std::shared_ptr<State> time_;
    std::shared_ptr<QueueState> queue_ = std::make_shared<QueueState>();
};

class VirtualSerialQueue final : public VirtualQueue<SerialQueue> {
public:
    using VirtualQueue::VirtualQueue;
    [[nodiscard]] bool isCurrent() const override { return isInnermost(false); }
};

class VirtualMainQueue final : public VirtualQueue<SerialQueue> {
public:
    using VirtualQueue::VirtualQueue;
    [[nodiscard]] bool isCurrent() const override { return isInnermost(true); }
};

} // namespace

VirtualTime::VirtualTime(double startSecondsSince1970)
    : state_(std::make_shared<State>()),
      main_(std::make_shared<VirtualMainQueue>("main", state_)),
      global_(std::make_shared<VirtualQueue<DispatchQueue>>("user-initiated", state_))
{
    state_->secondsSince1970AtStart = startSecondsSince1970;
}

VirtualTime::~VirtualTime()
{
    // Work may hold its own queue, which holds the state: let go of it by hand.
    state_->ended = true;
    const auto dropped = std::exchange(state_->waiting, {});
}

void VirtualTime::advance(nanoseconds duration)
{
    state_->runAll(state_->now + duration);
}

void VirtualTime::runUntilIdle()
{
    state_->runAll(state_->now);
}

std::size_t VirtualTime::pendingTimers() const
{
    return static_cast<std::size_t>(std::ranges::count_if(
        state_->waiting, [this](const auto &item) { return item.first.first > state_->now; }));
}

double VirtualTime::secondsSince1970() const
{
    return state_->secondsSince1970AtStart + std::chrono::duration<double>(state_->now).count();
}

double VirtualTime::secondsOfUptime() const
{
    constexpr double uptimeAtStart = 5000;
    return uptimeAtStart + std::chrono::duration<double>(state_->now).count();
}

SerialQueue &VirtualTime::mainQueue()
{
    return *main_;
}

DispatchQueue &VirtualTime::globalUserInitiated()
{
    return *global_;
}

std::shared_ptr<SerialQueue> VirtualTime::makeSerialQueue(std::string label)
{
    return std::make_shared<VirtualSerialQueue>(std::move(label), state_);
}

void VirtualTime::closeMain()
{
    static_cast<VirtualMainQueue &>(*main_).close();
}

} // namespace skyflare
