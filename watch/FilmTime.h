#pragma once

#include "platform/base/Clock.h"
#include "platform/base/DispatchQueue.h"
#include "platform/camera/CameraSource.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <mutex>

namespace skyflare {

/// Time as a film has it: it stands still while a frame is looked at and goes on with the next one.
///
/// The wall clock shows the moment of the start, truncated to whole seconds, plus the film's stream time.
/// Delayed work on queue() comes due by film time, before the frame of that time is measured. So a film
/// gives the same photos on every machine and under every load.
///
/// Threads: the clock on any; the gate on the session's streaming thread; main serves its loop meanwhile.
/// Borrows main and what `drainStills` uses.
class FilmTime final : public Clock, public FrameGate {
public:
    /// @param drainStills  returns once no still is asked for, encoded or stored any more
    FilmTime(SerialQueue &main, std::function<void()> drainStills, double startSecondsSince1970);

    [[nodiscard]] double secondsSince1970() const override;
    [[nodiscard]] double secondsOfUptime() const override;

    void willDeliver(std::chrono::nanoseconds streamTime) override;
    void didDeliver() override;

    /// Main, with delays in film time.
    [[nodiscard]] SerialQueue &queue() { return queue_; }

private:
    class Queue final : public SerialQueue {
    public:
        Queue(FilmTime &time, SerialQueue &main) : SerialQueue(main.label()), time_(time), main_(main) {}
        void async(Work work) override { main_.async(std::move(work)); }
        [[nodiscard]] bool sync(const Work &work) override { return main_.sync(work); }
        void asyncAfter(std::chrono::nanoseconds delay, Work work) override;
        [[nodiscard]] bool isCurrent() const override { return main_.isCurrent(); }

    private:
        FilmTime &time_;
        SerialQueue &main_;
    };

    SerialQueue &main_;
    std::function<void()> drainStills_;
    const double startSeconds_;
    std::atomic<std::chrono::nanoseconds> now_{std::chrono::nanoseconds{}};
    std::mutex mutex_;
    std::multimap<std::chrono::nanoseconds, DispatchQueue::Work> delayed_; // by when it is due
    Queue queue_;

    void runWhatIsDue(std::chrono::nanoseconds streamTime);
};

} // namespace skyflare
