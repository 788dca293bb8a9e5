#pragma once

#include "platform/image/VideoFrame.h"

#include <memory>
#include <mutex>

namespace skyflare {

/// Shows the frames of a session to the user.
class FramePreview {
public:
    virtual ~FramePreview() = default;

    /// A frame that is about to be measured: shown from the same buffer, which may be kept while it is
    /// turned into what is seen, and no longer. Must return at once: the measurement waits for it.
    /// On the video output's queue.
    virtual void show(const VideoFrame &frame) = 0;
};

/// Where a session finds its preview, which comes and goes while frames flow.
///
/// Threads: any.
class PreviewSlot {
public:
    void set(std::weak_ptr<FramePreview> preview)
    {
        const std::scoped_lock lock(mutex_);
        preview_ = std::move(preview);
    }
    [[nodiscard]] std::shared_ptr<FramePreview> get() const
    {
        const std::scoped_lock lock(mutex_);
        return preview_.lock();
    }

private:
    mutable std::mutex mutex_;
    std::weak_ptr<FramePreview> preview_;
};

} // namespace skyflare
