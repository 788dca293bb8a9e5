#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/camera/CaptureOutput.h"

#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace skyflare {

/// The photos asked for in one run of a session: gives each its frame, encodes it, answers once.
///
/// A compressed frame is passed through as it is; a raw one becomes a PNG, losslessly. The encoding queue
/// is borrowed and does the work; at most three stills are under way at once, each with a copy of its frame,
/// so that none of the camera's buffers is kept. A request that waits for its frame has no picture yet.
/// Threads: any.
class StillRequests : public std::enable_shared_from_this<StillRequests> {
public:
    explicit StillRequests(DispatchQueue &encodingQueue) : encodingQueue_(encodingQueue) {}

    /// While a frame is held: encodes that one and answers before it returns. Else the next whole frame is
    /// taken, and the answer comes from the encoding queue. After close(): answers with an error.
    void request(const CapturePhotoSettings &settings, std::shared_ptr<PhotoCaptureDelegate> delegate);

    /// A frame has come: whoever waits takes it.
    void offer(const VideoFrame &frame);

    /// As offer(); and until letGo() the frame is the one that requests take.
    void hold(const VideoFrame &frame);
    void letGo();

    /// No more frames come. Who still waits is told `why`.
    void close(const std::string &why);

private:
    struct Request {
        CapturePhotoSettings settings;
        std::shared_ptr<PhotoCaptureDelegate> delegate;
    };

    static void answer(const Request &request, VideoFrame frame);
    void encodeLater(const VideoFrame &frame, Request request);
    void failLater(Request request, const std::string &why);

    DispatchQueue &encodingQueue_;
    std::mutex mutex_;
    std::deque<Request> waiting_;
    std::optional<VideoFrame> held_;
    int underWay_ = 0;
    std::optional<std::string> closed_; ///< why
};

} // namespace skyflare
