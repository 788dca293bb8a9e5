#pragma once

#include "platform/base/DispatchQueue.h"

#include <chrono>
#include <functional>
#include <memory>

namespace skyflare {

/// Tells when nothing has happened for a while, and nobody holds the moment up.
///
/// Threads: those of its queue. Shared: who lets go of it hears no more. Borrows the queue.
class QuietWhile final : public std::enable_shared_from_this<QuietWhile> {
public:
    QuietWhile(SerialQueue &queue, std::chrono::nanoseconds length, std::function<void()> isOver)
        : queue_(queue), length_(length), isOver_(std::move(isOver))
    {
    }

    /// The while begins (anew).
    void begin();
    /// It is not over as long as somebody has what this gives, and begins anew then.
    [[nodiscard]] std::shared_ptr<void> hold();

private:
    SerialQueue &queue_;
    const std::chrono::nanoseconds length_;
    const std::function<void()> isOver_;
    unsigned turn_ = 0;
    unsigned holders_ = 0;
};

} // namespace skyflare
