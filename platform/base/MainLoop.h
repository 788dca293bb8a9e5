#pragma once

#include "platform/base/DispatchQueue.h"

#include <memory>
#include <thread>

namespace skyflare {

class AsioQueueCore;

/// The main queue of a program without an event loop of its own. The thread that makes it is main.
///
/// Threads: made, run and ended on main; the rest on any thread.
class MainLoop final : public SerialQueue {
public:
    explicit MainLoop(std::string label = "main");
    /// Drops what run() has not come to.
    ~MainLoop() override;

    /// Serves the queue until quit(), then what had been accepted before it. Once.
    void run();

    /// Closes the queue. Whoever waits in sync() goes home with false, run() soon returns.
    void quit();

    void async(Work work) override;
    [[nodiscard]] bool sync(const Work &work) override;
    void asyncAfter(std::chrono::nanoseconds delay, Work work) override;
    /// Whether the caller is on main, in run() or not.
    [[nodiscard]] bool isCurrent() const override;

private:
    const std::shared_ptr<AsioQueueCore> core_;
    const std::thread::id owner_ = std::this_thread::get_id();
};

} // namespace skyflare
