#include "platform/base/AsioQueueCore.h"

#include <asio/post.hpp>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace skyflare {

/// Somebody who waits in sync(). Guarded by the core's mutex.
struct AsioQueueCore::SyncCall {
    enum class Stage { Waiting, Running, Done, Abandoned };

    explicit SyncCall(const DispatchQueue::Work &callersWork) : work(callersWork) {}

    const DispatchQueue::Work &work; ///< the caller's; not looked at once the call is abandoned
    Stage stage = Stage::Waiting;
    std::condition_variable changed;
};

AsioQueueCore::AsioQueueCore(std::string label)
    : label_(std::move(label)), keepsRunning_(asio::make_work_guard(*context_))
{
}

// With mutex_ held: after close() nothing reaches the context.
void AsioQueueCore::post(DispatchQueue::Work work)
{
    ++accepted_;
    asio::post(*context_, [self = shared_from_this(), work = std::move(work)]() mutable {
        work();
        work = nullptr; // what it held ends here, before the queue counts as idle
        self->finished();
    });
}

void AsioQueueCore::finished()
{
    const std::scoped_lock lock(mutex_);
    if (--accepted_ == 0)
        idle_.notify_all();
}

void AsioQueueCore::async(DispatchQueue::Work work)
{
    const std::scoped_lock lock(mutex_);
    if (!closed_)
        post(std::move(work));
}

bool AsioQueueCore::sync(const DispatchQueue::Work &work)
{
    abortIfServedHere("sync");
    std::unique_lock lock(mutex_);
    if (closed_)
        return false;
    const auto call = std::make_shared<SyncCall>(work);
    syncCalls_.push_back(call);
    post([this, call] { runSyncCall(*call); });
    using Stage = SyncCall::Stage;
    call->changed.wait(lock, [&] { return call->stage == Stage::Done || call->stage == Stage::Abandoned; });
    return call->stage == Stage::Done;
}

void AsioQueueCore::runSyncCall(SyncCall &call)
{
    {
        const std::scoped_lock lock(mutex_);
        if (call.stage != SyncCall::Stage::Waiting)
            return;
        call.stage = SyncCall::Stage::Running;
        syncCalls_.remove_if([&](const auto &one) { return one.get() == &call; });
    }
    call.work();
    const std::scoped_lock lock(mutex_);
    call.stage = SyncCall::Stage::Done;
    call.changed.notify_all();
}

void AsioQueueCore::asyncAfter(std::chrono::nanoseconds delay, DispatchQueue::Work work)
{
    const std::scoped_lock lock(mutex_);
    if (closed_)
        return;
    const std::uint64_t number = nextTimer_++;
    auto &timer = timers_.try_emplace(number, *context_, delay).first->second;
    timer.async_wait([self = shared_from_this(), number, work = std::move(work)](
                         const asio::error_code &) mutable { self->timerEnded(number, std::move(work)); });
}

void AsioQueueCore::timerEnded(std::uint64_t number, DispatchQueue::Work work)
{
    {
        const std::scoped_lock lock(mutex_);
        timers_.erase(number);
        if (closed_)
            return;
        ++accepted_;
    }
    work();
    work = nullptr;
    finished();
}

void AsioQueueCore::close()
{
    const std::scoped_lock lock(mutex_);
    closed_ = true;
    timers_.clear(); // their handlers still come, and find the queue closed
    for (const auto &call : std::exchange(syncCalls_, {})) {
        call->stage = SyncCall::Stage::Abandoned;
        call->changed.notify_all();
    }
    keepsRunning_.reset();
}

void AsioQueueCore::run()
{
    context_->run();
}

void AsioQueueCore::discard()
{
    context_.reset();
}

bool AsioQueueCore::isServedHere()
{
    return context_ && context_->get_executor().running_in_this_thread();
}

void AsioQueueCore::waitUntilIdle()
{
    abortIfServedHere("waiting");
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return accepted_ == 0; });
}

void AsioQueueCore::abortIfServedHere(const char *what)
{
    if (!isServedHere())
        return;
    std::fprintf(stderr, "%s on %s from its own work would never end\n", what, label_.c_str());
    std::abort();
}

} // namespace skyflare
