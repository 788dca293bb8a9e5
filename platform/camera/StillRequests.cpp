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

/// The frame is let go of before the delegate is called, which may take its time.
void answer(PhotoCaptureDelegate &delegate, VideoFrame frame)
{
    auto encoded = encodeStill(frame);
    frame = {};
    if (encoded)
        delegate.didFinishProcessingPhoto({std::make_shared<const Bytes>(std::move(*encoded))}, {});
    else
        delegate.didFinishProcessingPhoto({}, encoded.error());
}

} // namespace

void StillRequests::request(std::shared_ptr<PhotoCaptureDelegate> delegate)
{
    std::unique_lock lock(mutex_);
    if (closed_) {
        const std::string why = *closed_;
        lock.unlock();
        fail(*delegate, why);
    } else if (held_) {
        VideoFrame frame = *held_;
        lock.unlock();
        answer(*delegate, std::move(frame));
    } else {
        waiting_.push_back(std::move(delegate));
    }
}

void StillRequests::offer(const VideoFrame &frame)
{
    if (!frame.hasImageBuffer())
        return;
    std::vector<Delegate> taking;
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
    for (Delegate &delegate : taking)
        encodeLater(own, std::move(delegate));
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
    for (Delegate &delegate : waiting_)
        failLater(std::move(delegate), why);
    waiting_.clear();
}

void StillRequests::encodeLater(const VideoFrame &frame, Delegate delegate)
{
    auto work = [self = shared_from_this(), frame = VideoFrame(frame),
                 delegate = std::move(delegate)]() mutable {
        answer(*delegate, std::exchange(frame, {}));
        const std::scoped_lock lock(self->mutex_);
        --self->underWay_;
    };
    encodingQueue_.async(std::move(work));
}

void StillRequests::failLater(Delegate delegate, const std::string &why)
{
    encodingQueue_.async([delegate = std::move(delegate), why] { fail(*delegate, why); });
}

} // namespace skyflare
