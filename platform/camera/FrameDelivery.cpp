#include "platform/camera/FrameDelivery.h"

namespace skyflare {

FrameDelivery::FrameDelivery(Mode mode, std::shared_ptr<VideoDataOutput> output,
                             std::shared_ptr<StillRequests> stills, FrameGate *gate)
    : mode_(mode),
      output_(std::move(output)),
      queue_(output_ ? output_->sampleBufferCallbackQueue() : nullptr),
      stills_(std::move(stills)),
      gate_(gate)
{
}

bool FrameDelivery::arrived(const VideoFrame &frame)
{
    ++arrivals_;
    if (isClosed_)
        return false;
    if (mode_ == Mode::InStep) {
        isBusy_ = true;
        const bool goesOn = deliverInStep(frame);
        isBusy_ = false;
        return goesOn;
    }
    stills_->offer(frame);
    if (queue_)
        leaveForQueue(frame);
    return true;
}

void FrameDelivery::close()
{
    isClosed_ = true;
    const std::scoped_lock lock(mutex_);
    newest_.reset();
}

bool FrameDelivery::deliverInStep(const VideoFrame &frame)
{
    if (gate_)
        gate_->willDeliver(frame.streamTime);
    // Until the gate is through: what the frame has set going may ask for a still of it.
    stills_->hold(frame);
    const bool wasTaken = !queue_ || queue_->sync([&] { callDelegate(frame); });
    if (wasTaken && gate_)
        gate_->didDeliver();
    stills_->letGo();
    return wasTaken;
}

void FrameDelivery::leaveForQueue(const VideoFrame &frame)
{
    {
        const std::scoped_lock lock(mutex_);
        if (isClosed_)
            return;
        const bool isQueued = newest_.has_value();
        newest_ = frame;
        if (isQueued) {
            ++dropped_;
            return;
        }
    }
    queue_->async([self = shared_from_this()] { self->deliverNewest(); });
}

void FrameDelivery::deliverNewest()
{
    std::optional<VideoFrame> frame;
    {
        const std::scoped_lock lock(mutex_);
        frame.swap(newest_);
    }
    if (frame)
        callDelegate(*frame);
}

void FrameDelivery::callDelegate(const VideoFrame &frame)
{
    const auto delegate = output_->sampleBufferDelegate();
    if (isClosed_ || !delegate)
        return;
    ++delivered_;
    delegate->didOutputSampleBuffer(frame);
}

} // namespace skyflare
