#pragma once

#include <QObject>
#include <atomic>
#include <thread>
#include <vector>

namespace skyflare::bench {

/// How late an event loop is. A thread posts it an event each millisecond, but never a second one while the
/// first is waiting, and each notes how long it has waited: nothing that keeps the loop busy for longer than
/// that millisecond goes unseen, as keys and touches would feel it.
///
/// Threads: made, started, stopped and read on the thread whose loop it watches.
class LoopProbe final : public QObject {
public:
    LoopProbe() = default;
    LoopProbe(const LoopProbe &) = delete;
    LoopProbe &operator=(const LoopProbe &) = delete;
    ~LoopProbe() override { stop(); }

    void start();
    void stop();
    /// Seconds, in the order of their events.
    [[nodiscard]] const std::vector<double> &delays() const { return delays_; }

protected:
    void customEvent(QEvent *event) override;

private:
    std::atomic<bool> isWatching_ = false;
    std::atomic<bool> isWaiting_ = false;
    std::atomic<double> postedAt_ = 0;
    std::vector<double> delays_;
    std::thread poster_;

    void post();
};

} // namespace skyflare::bench
