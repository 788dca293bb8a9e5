#include "platform/camera/StillRequests.h"

#include "platform/camera/FramePlanes.h"
#include "platform/image/Image.h"

#include <vector>

namespace skyflare {

namespace {

constexpr int stillsAtOnce = 3;

Result<Bytes> encodeStill(const VideoFrame &frame)
{
    if (frame.format == PixelFormat::Jpeg)
        return Bytes(frame.planes[0].data, frame.planes[0].data + frame.planes[0].stride);
    return encodePng(frame);
}

void fail(PhotoCaptureDelegate &delegate, const std::string &why)
{
    delegate.didFinishProcessingPhoto({}, Error{"camera", 0, why});
}

} // namespace

/// The frame is let go of before the delegate is called, which may take its time.
void StillRequests::answer(const Request &request, VideoFrame frame)
{
    auto encoded = encodeStill(frame);
    if (!encoded) {
        request.delegate->didFinishProcessingPhoto({}, encoded.error());
        return;
    }
    CapturePhoto photo{.encoded = std::make_shared<const Bytes>(std::move(*encoded))};
    if (request.settings.smallCopy == CapturePhotoSettings::SmallCopy::Yes) {
        if (auto copy = encodeReduced(frame)) // else it is made later, if ever it is wanted
            photo.smallCopy = *std::move(copy);
    }
    frame = {};
    request.delegate->didFinishProcessingPhoto(photo, {});
}

void StillRequests::request(const CapturePhotoSettings &settings,
                            std::shared_ptr<PhotoCaptureDelegate> delegate)
{
    std::unique_lock lock(mutex_);
    if (closed_) {
        const std::string why = *closed_;
        lock.unlock();
        fail(*delegate, why);
    } else if (held_) {
        VideoFrame frame = *held_;
        lock.unlock();
        answer({settings, std::move(delegate)}, std::move(frame));
    } else {
        waiting_.push_back({settings, std::move(delegate)});
    }
}

void StillRequests::offer(const VideoFrame &frame)
{
    if (!frame.hasImageBuffer())
        return;
    std::vector<Request> taking;
    {
        const std::scoped_lock lock(mutex_);
        for (; !waiting_.empty() && underWay_ < stillsAtOnce; ++underWay_) {
            taking.push_back(std::move(waiting_.front()));
            waiting_.pop_front();
        }
    }
    if (taking.empty())
        return;
    // A camera has four to eight buffers and goes silent without a free one: it gets this one back now, not
    // when the picture has been encoded. The copy of 18 MB takes a few ms.
    const VideoFrame own = copied(frame);
    for (Request &request : taking)
        encodeLater(own, std::move(request));
}

void StillRequests::hold(const VideoFrame &frame)
{
    offer(frame);
    const std::scoped_lock lock(mutex_);
    held_ = frame;
}

void StillRequests::letGo()
{
    const std::scoped_lock lock(mutex_);
    held_.reset();
}

void StillRequests::close(const std::string &why)
{
    const std::scoped_lock lock(mutex_);
    if (closed_)
        return;
    closed_ = why;
    for (Request &request : waiting_)
        failLater(std::move(request), why);
    waiting_.clear();
}

void StillRequests::encodeLater(const VideoFrame &frame, Request request)
{
    auto work = [self = shared_from_this(), frame = VideoFrame(frame),
                 request = std::move(request)]() mutable {
        answer(request, std::exchange(frame, {}));
        const std::scoped_lock lock(self->mutex_);
        --self->underWay_;
    };
    encodingQueue_.async(std::move(work));
}

void StillRequests::failLater(Request request, const std::string &why)
{
    encodingQueue_.async([request = std::move(request), why] { fail(*request.delegate, why); });
}

} // namespace skyflare
