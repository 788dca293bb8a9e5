#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace skyflare {

/// How many graphs are up, or still on their way down. Shared by all who have one. Threads: any.
class GraphCount : public std::enable_shared_from_this<GraphCount> {
public:
    /// One graph more, until what this returns is let go of.
    [[nodiscard]] std::shared_ptr<void> add()
    {
        const std::scoped_lock lock(mutex_);
        ++count_;
        return {nullptr, [self = shared_from_this()](void *) { self->remove(); }};
    }

    /// @return false if some are still up when `limit` has passed.
    bool waitForNone(std::chrono::nanoseconds limit)
    {
        std::unique_lock lock(mutex_);
        return none_.wait_for(lock, limit, [this] { return count_ == 0; });
    }

private:
    void remove()
    {
        const std::scoped_lock lock(mutex_);
        --count_;
        none_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable none_;
    int count_ = 0;
};

} // namespace skyflare
