#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

/// Tells whoever asked that something with a name has happened; observers re-read what they show.
///
/// Threads: all functions on any thread. Observers run one after the other, in the order in which they
///     were added, on the thread of whoever posts, with no lock of the centre held.
class NotificationCenter {
    struct Observer;

public:
    /// Observes as long as it lives. When its end returns, its block neither runs nor will run, unless
    /// the block itself ends it.
    class [[nodiscard]] Observation {
    public:
        Observation() = default;
        Observation(Observation &&) noexcept = default;
        Observation &operator=(Observation &&other) noexcept;
        Observation(const Observation &) = delete;
        Observation &operator=(const Observation &) = delete;
        ~Observation();

    private:
        friend class NotificationCenter;
        explicit Observation(std::shared_ptr<Observer> observer) : observer_(std::move(observer)) {}
        std::shared_ptr<Observer> observer_;
    };

    Observation addObserver(std::string_view name, std::function<void()> block);

    /// Runs the block of everyone who observes `name`, then returns.
    void postNotificationName(std::string_view name);

private:
    std::mutex mutex_;
    std::vector<std::weak_ptr<Observer>> observers_;
};

} // namespace skyflare
