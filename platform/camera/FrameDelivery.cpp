#include "platform/camera/FrameDelivery.h"

namespace skyflare {

FrameDelivery::FrameDelivery(Parts parts)
    : parts_(std::move(parts)), queue_(parts_.output ? parts_.output->sampleBufferCallbackQueue() : nullptr)
{
}

bool FrameDelivery::arrived(const VideoFrame &frame)
{
    ++arrivals_;
    if (isClosed_)
        return false;
    if (parts_.mode == Mode::InStep) {
        isBusy_ = true;
        const bool goesOn = deliverInStep(frame);
        isBusy_ = false;
        return goesOn;
    }
    parts_.stills->offer(frame);
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
    if (parts_.gate)
        parts_.gate->willDeliver(frame.streamTime);
    // Until the gate is through: what the frame has set going may ask for a still of it.
    parts_.stills->hold(frame);
    const bool wasTaken = !queue_ || queue_->sync([&] { callDelegate(frame); });
    if (wasTaken && parts_.gate)
        parts_.gate->didDeliver();
    parts_.stills->letGo();
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
    const auto delegate = parts_.output->sampleBufferDelegate();
    if (isClosed_ || !delegate)
        return;
    ++delivered_;
    if (const auto preview = parts_.preview->get(); preview && frame.hasImageBuffer())
        preview->show(frame);
    delegate->didOutputSampleBuffer(frame);
}

} // namespace skyflare
