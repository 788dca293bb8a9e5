#pragma once

#include "platform/camera/CameraSource.h"
#include "platform/camera/CaptureSession.h"
#include "platform/camera/FramePreview.h"
#include "platform/camera/StillRequests.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace skyflare {

/// Brings the frames of one run to the video output's delegate, on that output's queue.
///
/// Newest: the streaming thread leaves the frame and goes on; the queue takes the newest one when its turn
/// comes, and those in between are dropped and counted. InStep: the streaming thread waits until the
/// delegate, and the gate if there is one, are done with the frame; none is dropped.
/// Threads: arrived() on the streaming thread, the rest on any.
class FrameDelivery : public std::enable_shared_from_this<FrameDelivery> {
public:
    enum class Mode { Newest, InStep };

    struct Parts {
        Mode mode{};
        std::shared_ptr<VideoDataOutput> output; ///< may be empty: then the frames are for stills alone
        std::shared_ptr<StillRequests> stills;
        std::shared_ptr<PreviewSlot> preview; ///< whoever is in it gets a frame just before the delegate
        FrameGate *gate = nullptr; ///< may be null; borrowed, called for no frame that begins after close()
    };

    explicit FrameDelivery(Parts parts);

    /// @return false once nobody takes frames any more.
    bool arrived(const VideoFrame &frame);

    /// No delegate is called for a frame that begins after this. Returns at once.
    void close();

    /// Whether the streaming thread is waiting for a frame to be dealt with.
    [[nodiscard]] bool isBusy() const { return isBusy_; }
    /// Frames that have come so far.
    [[nodiscard]] std::int64_t arrivals() const { return arrivals_; }
    [[nodiscard]] FrameStatistics statistics() const { return {delivered_, dropped_}; }

private:
    bool deliverInStep(const VideoFrame &frame);
    void leaveForQueue(const VideoFrame &frame);
    void deliverNewest();
    void callDelegate(const VideoFrame &frame);

    const Parts parts_;
    const std::shared_ptr<SerialQueue> queue_;
    std::atomic<bool> isClosed_ = false;
    std::atomic<bool> isBusy_ = false;
    std::atomic<std::int64_t> arrivals_ = 0;
    std::atomic<std::int64_t> delivered_ = 0;
    std::atomic<std::int64_t> dropped_ = 0;
    std::mutex mutex_;
    std::optional<VideoFrame> newest_; ///< left for the queue, not yet taken
};

} // namespace skyflare
