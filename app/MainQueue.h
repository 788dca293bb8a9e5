#pragma once

#include "platform/base/DispatchQueue.h"

#include <memory>
#include <thread>

namespace skyflare {

/// The main queue of the app, served by Qt's event loop: it runs nothing unless that runs. The thread that
/// makes it is main; it sleeps while there is nothing to do.
///
/// Threads: made, closed and ended on main; the rest on any thread.
class MainQueue final : public SerialQueue {
public:
    MainQueue();
    /// Drops what the event loop has not come to.
    ~MainQueue() override;

    /// Accepts nothing more. Whoever waits in sync() goes home with false.
    void close();

    void async(Work work) override;
    [[nodiscard]] bool sync(const Work &work) override;
    void asyncAfter(std::chrono::nanoseconds delay, Work work) override;
    [[nodiscard]] bool isCurrent() const override { return std::this_thread::get_id() == owner_; }

private:
    class Core;
    const std::shared_ptr<Core> core_; ///< shared with those who are just calling
    const std::thread::id owner_ = std::this_thread::get_id();
};

} // namespace skyflare
