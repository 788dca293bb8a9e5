#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace skyflare {

/// The graphs that are up, or still on their way down, and the devices that they have. Shared by all who
/// have one. Threads: any.
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
        return changed_.wait_for(lock, limit, [this] { return count_ == 0; });
    }

    /// Waits until nobody has the device of that identity, and takes it, until what this returns is let go
    /// of. Takes nothing once `isCancelled` says so, which is asked again after each wake(). An empty
    /// identity stands for no device: it is always free.
    [[nodiscard]] std::shared_ptr<void> take(const std::string &identity,
                                             const std::function<bool()> &isCancelled)
    {
        if (identity.empty())
            return {};
        std::unique_lock lock(mutex_);
        bool isGivenUp = false;
        changed_.wait(lock, [&] { return (isGivenUp = isCancelled()) || !taken_.contains(identity); });
        if (isGivenUp)
            return {};
        taken_.insert(identity);
        return {nullptr, [self = shared_from_this(), identity](void *) { self->giveBack(identity); }};
    }
    void wake()
    {
        const std::scoped_lock lock(mutex_);
        changed_.notify_all();
    }

private:
    void remove()
    {
        const std::scoped_lock lock(mutex_);
        --count_;
        changed_.notify_all();
    }
    void giveBack(const std::string &identity)
    {
        const std::scoped_lock lock(mutex_);
        taken_.erase(identity);
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
    std::set<std::string> taken_;
};

} // namespace skyflare
