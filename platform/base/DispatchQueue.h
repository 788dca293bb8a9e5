#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// Somewhere to run work: one thread's turn (SerialQueue), or a bounded number of threads.
///
/// Threads: every function may be called on any thread.
class DispatchQueue {
public:
    using Work = std::function<void()>;

    explicit DispatchQueue(std::string label) : label_(std::move(label)) {}
    DispatchQueue(const DispatchQueue &) = delete;
    DispatchQueue &operator=(const DispatchQueue &) = delete;
    virtual ~DispatchQueue() = default;

    /// Runs `work` later, after what was handed over before it. A closed queue drops it.
    virtual void async(Work work) = 0;

    /// Runs `work` and waits for its end.
    /// From the queue's own work it would wait for itself: a programming error, which aborts.
    /// @return false if the queue is closed, or closes before the turn of `work` comes; then nothing ran.
    [[nodiscard]] virtual bool sync(const Work &work) = 0;

    /// Runs `work` once `delay` has passed. A queue that is closed by then drops it.
    virtual void asyncAfter(std::chrono::nanoseconds delay, Work work) = 0;

    [[nodiscard]] const std::string &label() const { return label_; }

private:
    std::string label_;
};

/// A queue that runs one thing at a time, in the order in which it was handed over.
class SerialQueue : public DispatchQueue {
public:
    using DispatchQueue::DispatchQueue;

    /// Whether the caller runs on this queue.
    [[nodiscard]] virtual bool isCurrent() const = 0;
};

/// Aborts with "insertRawEvent() must run on worker" unless the caller runs on `queue`.
/// `function` is the caller's name, as both gcc and clang 14 can give it.
void assertOn(const SerialQueue &queue, const char *function = __builtin_FUNCTION());

/// Makes the queues of a process. Any thread.
class QueueFactory {
public:
    QueueFactory() = default;
    QueueFactory(const QueueFactory &) = delete;
    QueueFactory &operator=(const QueueFactory &) = delete;
    virtual ~QueueFactory() = default;

    /// A new serial queue. Letting go of it closes it: what it had accepted still runs, off the caller's
    /// thread if need be, so that a queue may be let go of by its own work.
    [[nodiscard]] virtual std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) = 0;

    /// The concurrent queue for what the user waits for: stills, encoding, photo callbacks. A bounded
    /// number of threads.
    [[nodiscard]] virtual DispatchQueue &globalUserInitiated() = 0;
};

} // namespace skyflare
