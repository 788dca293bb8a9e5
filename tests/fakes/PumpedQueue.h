#pragma once

#include "platform/base/DispatchQueue.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace skyflare {

/// The main queue of a test that waits for what other threads and processes do: it runs on the test's own
/// thread, while the test waits.
///
/// Threads: made, pumped and ended by the test; async() on any thread.
class PumpedQueue final : public SerialQueue {
public:
    PumpedQueue() : SerialQueue("main") {}

    /// Runs what comes until `condition` holds, which is asked again after each piece of work. False if that
    /// takes for ever.
    bool runUntil(const std::function<bool()> &condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            std::unique_lock lock(mutex_);
            if (!changed_.wait_until(lock, deadline, [this] { return !waiting_.empty(); }))
                return false;
            const Work work = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            work();
        }
        return true;
    }

    void async(Work work) override
    {
        const std::scoped_lock lock(mutex_);
        waiting_.push_back(std::move(work));
        changed_.notify_all();
    }
    [[nodiscard]] bool sync(const Work & /*work*/) override { return false; }
    /// Its time comes when the test says so.
    void asyncAfter(std::chrono::nanoseconds /*delay*/, Work work) override
    {
        const std::scoped_lock lock(mutex_);
        timers_.push_back(std::move(work));
    }
    /// More time passes than anything has been put off for so far.
    void passTime()
    {
        std::unique_lock lock(mutex_);
        auto due = std::exchange(timers_, {});
        lock.unlock();
        for (Work &work : due)
            async(std::move(work));
    }
    [[nodiscard]] bool isCurrent() const override { return std::this_thread::get_id() == owner_; }

private:
    const std::thread::id owner_ = std::this_thread::get_id();
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Work> waiting_;
    std::deque<Work> timers_;
};

} // namespace skyflare
