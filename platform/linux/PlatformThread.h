#pragma once

#include <functional>
#include <memory>
#include <thread>

struct _GMainContext; // NOLINT(bugprone-reserved-identifier): GLib's

namespace skyflare {

/// A thread for GLib, on one of which the program speaks with the desktop. It serves a GMainContext of its
/// own, so that nothing depends on whose main loop the host runs, and sleeps while there is nothing to do.
///
/// Threads: made and ended on main; the rest on any thread. Outlives who holds it.
class PlatformThread {
public:
    PlatformThread();
    /// Waits until what was handed over has run, and nobody holds the thread any more.
    ~PlatformThread();
    PlatformThread(const PlatformThread &) = delete;
    PlatformThread &operator=(const PlatformThread &) = delete;

    /// Runs `work` there, after what was handed over before it. It may begin asynchronous calls of GIO's:
    /// their answers come there, too.
    void async(std::function<void()> work);

    /// As long as someone has it the thread does not end: for whom GIO still owes an answer. Let go of on the
    /// thread.
    [[nodiscard]] std::shared_ptr<void> hold() const { return holds_; }

private:
    struct Release {
        void operator()(_GMainContext *context) const;
    };

    const std::unique_ptr<_GMainContext, Release> context_;
    const std::shared_ptr<void> holds_ = std::make_shared<int>();
    bool isEnding_ = false; ///< the thread's
    std::thread thread_;    ///< last: it uses all of the above

    void run();
};

} // namespace skyflare
