#include "platform/base/AsioQueues.h"

#include "platform/base/AsioQueueCore.h"

#include <pthread.h>

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

/// The part that serial and concurrent queues share. Letting go of the queue closes it.
template <typename Base> class AsioQueue : public Base {
public:
    AsioQueue(std::string label, std::shared_ptr<AsioQueueCore> core)
        : Base(std::move(label)), core_(std::move(core))
    {
    }
    AsioQueue(const AsioQueue &) = delete;
    AsioQueue &operator=(const AsioQueue &) = delete;
    ~AsioQueue() override { core_->close(); }

    void async(DispatchQueue::Work work) override { core_->async(std::move(work)); }
    [[nodiscard]] bool sync(const DispatchQueue::Work &work) override
    {
        const auto core = core_; // the work may let go of this queue
        return core->sync(work);
    }
    void asyncAfter(std::chrono::nanoseconds delay, DispatchQueue::Work work) override
    {
        core_->asyncAfter(delay, std::move(work));
    }

protected:
    [[nodiscard]] AsioQueueCore &core() const { return *core_; }

private:
    const std::shared_ptr<AsioQueueCore> core_;
};

class AsioSerialQueue final : public AsioQueue<SerialQueue> {
public:
    using AsioQueue::AsioQueue;
    [[nodiscard]] bool isCurrent() const override { return core().isServedHere(); }
};

void nameThisThread(const std::string &label)
{
    constexpr std::size_t longestName = 15; // the kernel's limit
    pthread_setname_np(pthread_self(), label.substr(0, longestName).c_str());
}

std::thread serve(std::shared_ptr<AsioQueueCore> core, std::string label,
                  std::shared_ptr<std::atomic<bool>> ended, std::function<void()> prepare = {})
{
    return std::thread([core = std::move(core), label = std::move(label), ended = std::move(ended),
                        prepare = std::move(prepare)]() {
        nameThisThread(label);
        if (prepare)
            prepare();
        core->run();
        *ended = true;
    });
}

} // namespace

AsioQueues::AsioQueues(const std::function<void()> &prepareGlobalThread)
{
    const std::string label = "user-initiated";
    globalCore_ = std::make_shared<AsioQueueCore>(label);
    global_ = std::make_unique<AsioQueue<DispatchQueue>>(label, globalCore_);
    const unsigned count = std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
    for (unsigned number = 0; number < count; ++number)
        globalThreads_.push_back(
            serve(globalCore_, label, std::make_shared<std::atomic<bool>>(false), prepareGlobalThread));
}

AsioQueues::~AsioQueues()
{
    close();
    if (closer_.joinable())
        closer_.join();
}

std::shared_ptr<SerialQueue> AsioQueues::makeSerialQueue(std::string label)
{
    auto core = std::make_shared<AsioQueueCore>(label);
    const std::scoped_lock lock(mutex_);
    if (closed_) {
        core->close();
    } else {
        joinEnded();
        auto ended = std::make_shared<std::atomic<bool>>(false);
        serial_.push_back({core, ended, serve(core, label, ended)});
    }
    return std::make_shared<AsioSerialQueue>(std::move(label), std::move(core));
}

// Nobody waits for the thread of a queue that was let go of: whoever let go may be its own work, or main,
// for which that work waits. Here it has nothing left to do but to end.
void AsioQueues::joinEnded()
{
    for (Served &served : serial_)
        if (*served.ended)
            served.thread.join();
    std::erase_if(serial_, [](const Served &served) { return !served.thread.joinable(); });
}

DispatchQueue &AsioQueues::globalUserInitiated()
{
    return *global_;
}

void AsioQueues::drainGlobal()
{
    globalCore_->waitUntilIdle();
}

void AsioQueues::close()
{
    const std::scoped_lock closing(closing_);
    std::vector<Served> serial;
    {
        const std::scoped_lock lock(mutex_);
        closed_ = true;
        serial = std::exchange(serial_, {});
    }
    for (const Served &served : serial)
        served.core->close();
    for (Served &served : serial)
        served.thread.join();
    globalCore_->waitUntilIdle();
    globalCore_->close();
    for (std::thread &thread : std::exchange(globalThreads_, {}))
        thread.join();
}

void AsioQueues::closeThen(std::function<void()> closed)
{
    closer_ = std::thread([this, closed = std::move(closed)] {
        close();
        closed();
    });
}

} // namespace skyflare
