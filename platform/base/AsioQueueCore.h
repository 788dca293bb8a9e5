#pragma once

#include "platform/base/DispatchQueue.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include <condition_variable>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace skyflare {

/// What is behind a queue: its work, its timers, who waits for it. The queue's threads share it, so that
/// what was accepted outlives the queue itself.
///
/// Threads: any; run() on each thread that is to serve the queue.
class AsioQueueCore : public std::enable_shared_from_this<AsioQueueCore> {
public:
    explicit AsioQueueCore(std::string label);

    void async(DispatchQueue::Work work);
    [[nodiscard]] bool sync(const DispatchQueue::Work &work);
    void asyncAfter(std::chrono::nanoseconds delay, DispatchQueue::Work work);

    /// Accepts nothing more, drops the timers, and sends those home who wait in sync() for their turn.
    /// What async() has accepted still runs.
    void close();

    /// Serves the queue until it is closed and has nothing left to run.
    void run();
    /// Drops what nobody has run, after close(); nobody may be in run(), now or later.
    void discard();

    /// Whether the caller is in run().
    [[nodiscard]] bool isServedHere();
    /// Waits until nothing is running and nothing waits for its turn; timers do not count.
    void waitUntilIdle();

private:
    struct SyncCall;

    const std::string label_;
    std::mutex mutex_;
    std::condition_variable idle_;
    bool closed_ = false;
    std::size_t accepted_ = 0; ///< running, or waiting for its turn
    std::list<std::shared_ptr<SyncCall>> syncCalls_;
    std::optional<asio::io_context> context_{std::in_place};
    std::optional<asio::executor_work_guard<asio::io_context::executor_type>> keepsRunning_;
    std::uint64_t nextTimer_ = 0;
    std::map<std::uint64_t, asio::steady_timer> timers_;

    void post(DispatchQueue::Work work);
    void runSyncCall(SyncCall &call);
    void timerEnded(std::uint64_t number, DispatchQueue::Work work);
    void finished();
    void abortIfServedHere(const char *what);
};

} // namespace skyflare
