#pragma once

#include "platform/base/DispatchQueue.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace skyflare {

class AsioQueueCore;

/// The queues of a running program: each serial queue has a thread of its own, the global one two to four.
///
/// Shutting down, from the outside in: stop what hands over work, then closeThen() while main goes on
/// serving its loop, so that work may still `sync` to it; it ends with the main loop's quit(). The main
/// loop is made first and ends last.
///
/// Threads: any; made and ended on main. Outlives everyone who borrows it.
class AsioQueues final : public QueueFactory {
public:
    /// @param prepareGlobalThread  what each thread of the global queue does first
    explicit AsioQueues(const std::function<void()> &prepareGlobalThread = {});
    /// Closes, and waits as close() does.
    ~AsioQueues() override;

    [[nodiscard]] std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override;
    [[nodiscard]] DispatchQueue &globalUserInitiated() override;

    /// Waits until the global queue has nothing running and nothing waiting for its turn; its timers do
    /// not count. Not from its own work.
    void drainGlobal();

    /// Closes every serial queue and waits until they have run what they had accepted, then the same for
    /// the global queue, which they and its own work may feed until then. Queues made later are born closed.
    /// Not from a queue's work, and not where that work waits for the caller: there, use closeThen().
    void close();

    /// close() on a thread of its own, then `closed` there. Returns at once. Once in a life.
    void closeThen(std::function<void()> closed);

private:
    struct Served {
        std::shared_ptr<AsioQueueCore> core;
        std::shared_ptr<std::atomic<bool>> ended; ///< set by the thread as its last act
        std::thread thread;
    };

    std::mutex mutex_;
    bool closed_ = false;
    std::vector<Served> serial_;
    std::shared_ptr<AsioQueueCore> globalCore_;
    std::unique_ptr<DispatchQueue> global_;
    std::mutex closing_; ///< held while somebody closes; the next one waits until all is closed
    std::vector<std::thread> globalThreads_;
    std::thread closer_;

    void joinEnded();
};

} // namespace skyflare
