#pragma once

#include "platform/base/Result.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace skyflare {

/// Lets the writers of this process pass one at a time, none waiting longer than it wants to.
///
/// Threads: any. Outlives its turns.
class WriterGate {
public:
    /// Somebody's turn to write, until it ends.
    class Turn {
    public:
        explicit Turn(WriterGate &gate) : gate_(&gate) {}
        Turn(Turn &&other) noexcept : gate_(std::exchange(other.gate_, nullptr)) {}
        Turn(const Turn &) = delete;
        Turn &operator=(const Turn &) = delete;
        Turn &operator=(Turn &&) = delete;
        ~Turn();

    private:
        WriterGate *gate_;
    };

    /// Fails as a locked database does when the turn has not come in time.
    Result<Turn> take(std::chrono::milliseconds atMost);

private:
    std::mutex mutex_;
    std::condition_variable freed_;
    bool taken_ = false;
};

} // namespace skyflare
