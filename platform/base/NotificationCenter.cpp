#include "platform/base/NotificationCenter.h"

#include <algorithm>
#include <condition_variable>
#include <thread>
#include <utility>

namespace skyflare {

/// One block, and the threads that are inside it.
///
/// Deliberate: no lock is held while the block runs. Two threads that post may run it side by side, and a
/// block may wait for a queue whose work posts the same name.
struct NotificationCenter::Observer {
    Observer(std::string_view observedName, std::function<void()> observerBlock)
        : name(observedName), block(std::move(observerBlock))
    {
    }

    const std::string name;
    const std::function<void()> block;
    std::mutex mutex;
    std::condition_variable left;
    std::vector<std::thread::id> inside; ///< one entry for each call, nested ones too
    bool ended = false;

    void run()
    {
        struct Leaves {
            Observer &observer;
            ~Leaves() { observer.leave(); }
        };
        {
            const std::scoped_lock lock(mutex);
            if (ended)
                return;
            inside.push_back(std::this_thread::get_id());
        }
        const Leaves leaves{*this};
        block();
    }

    /// Waits for every other thread inside; the block itself may call this.
    void end()
    {
        std::unique_lock lock(mutex);
        ended = true;
        left.wait(lock, [this] {
            return std::all_of(inside.begin(), inside.end(),
                               [self = std::this_thread::get_id()](auto id) { return id == self; });
        });
    }

private:
    void leave()
    {
        const std::scoped_lock lock(mutex);
        inside.erase(std::find(inside.begin(), inside.end(), std::this_thread::get_id()));
        left.notify_all();
    }
};

NotificationCenter::Observation &NotificationCenter::Observation::operator=(Observation &&other) noexcept
{
    const Observation ended(std::move(*this));
    observer_ = std::move(other.observer_);
    return *this;
}

NotificationCenter::Observation::~Observation()
{
    if (observer_)
        observer_->end();
}

NotificationCenter::Observation NotificationCenter::addObserver(std::string_view name,
                                                                std::function<void()> block)
{
    auto observer = std::make_shared<Observer>(name, std::move(block));
    const std::scoped_lock lock(mutex_);
    std::erase_if(observers_, [](const auto &one) { return one.expired(); });
    observers_.push_back(observer);
    return Observation(std::move(observer));
}

void NotificationCenter::postNotificationName(std::string_view name)
{
    std::vector<std::shared_ptr<Observer>> addressed;
    {
        const std::scoped_lock lock(mutex_);
        for (const auto &one : observers_)
            if (auto observer = one.lock(); observer && observer->name == name)
                addressed.push_back(std::move(observer));
    }
    for (const auto &observer : addressed)
        observer->run();
}

} // namespace skyflare
