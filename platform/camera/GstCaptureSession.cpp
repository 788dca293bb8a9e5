#include "platform/camera/GstCaptureSession.h"

#include "platform/camera/CaptureRun.h"

#include <algorithm>
#include <utility>

namespace skyflare {

GstCaptureSession::GstCaptureSession(Services services) : services_(std::move(services)) {}

GstCaptureSession::~GstCaptureSession()
{
    stopRunning();
}

bool GstCaptureSession::canAddInput(const std::shared_ptr<CaptureDeviceInput> &input) const
{
    const std::scoped_lock lock(mutex_);
    return input && !source_ && std::dynamic_pointer_cast<CameraSource>(input->device());
}

void GstCaptureSession::addInput(std::shared_ptr<CaptureDeviceInput> input)
{
    if (!canAddInput(input))
        return;
    const std::scoped_lock lock(mutex_);
    source_ = std::dynamic_pointer_cast<CameraSource>(input->device());
}

bool GstCaptureSession::canAddOutput(const std::shared_ptr<CaptureOutput> &output) const
{
    const std::scoped_lock lock(mutex_);
    if (std::dynamic_pointer_cast<VideoDataOutput>(output))
        return !firstOutput<VideoDataOutput>();
    return std::dynamic_pointer_cast<GstPhotoOutput>(output) && !firstOutput<GstPhotoOutput>();
}

void GstCaptureSession::addOutput(std::shared_ptr<CaptureOutput> output)
{
    if (!canAddOutput(output))
        return;
    const std::scoped_lock lock(mutex_);
    outputs_.push_back(std::move(output));
}

std::vector<std::shared_ptr<CaptureOutput>> GstCaptureSession::outputs() const
{
    const std::scoped_lock lock(mutex_);
    return outputs_;
}

void GstCaptureSession::startRunning()
{
    std::shared_ptr<CaptureRun> run;
    {
        const std::scoped_lock lock(mutex_);
        if (run_ && !run_->isOver())
            return;
        if (isStoppedForGood_)
            report({{SessionEvent::Kind::Stopped, {}, {}, {}}});
        else
            run = run_ = makeRun();
    }
    if (run)
        run->start();
}

void GstCaptureSession::stopRunning()
{
    std::shared_ptr<CaptureRun> current;
    {
        const std::scoped_lock lock(mutex_);
        current = run_;
        isStoppedForGood_ = isStoppedForGood_ || !current;
    }
    if (current)
        current->stop();
}

bool GstCaptureSession::isRunning() const
{
    const auto current = run();
    return current && !current->isOver();
}

void GstCaptureSession::setEventHandler(EventHandler handler)
{
    const std::scoped_lock lock(mutex_);
    eventHandler_ = std::move(handler);
}

FrameStatistics GstCaptureSession::frameStatistics() const
{
    const auto current = run();
    return current ? current->statistics() : FrameStatistics();
}

void GstCaptureSession::report(std::vector<SessionEvent> events) const
{
    if (eventHandler_)
        services_.controlQueue->async([handler = eventHandler_, events = std::move(events)] {
            std::ranges::for_each(events, handler);
        });
}

std::shared_ptr<CaptureRun> GstCaptureSession::makeRun() const
{
    if (!source_) {
        report({{SessionEvent::Kind::Failed, {}, "there is no camera", {}},
                {SessionEvent::Kind::Stopped, {}, {}, {}}});
        return nullptr;
    }
    const auto stills = std::make_shared<StillRequests>(services_.encodingQueue);
    if (const auto photos = firstOutput<GstPhotoOutput>())
        photos->attach(stills);
    const auto video = firstOutput<VideoDataOutput>();
    const bool isLockStep = source_->pacing() == Pacing::LockStep;
    const bool isInStep = isLockStep || (video && !video->alwaysDiscardsLateVideoFrames());
    const auto delivery = std::make_shared<FrameDelivery>(FrameDelivery::Parts{
        .mode = isInStep ? FrameDelivery::Mode::InStep : FrameDelivery::Mode::Newest,
        .output = video,
        .stills = stills,
        .preview = previewSlot(),
        .gate = isLockStep ? services_.gate : nullptr,
    });
    return std::make_shared<CaptureRun>(CaptureRun::Parts{
        source_, delivery, stills, video && !isInStep ? video->sampleBufferCallbackQueue() : nullptr,
        services_.controlQueue, services_.graphs, eventHandler_});
}

std::shared_ptr<CaptureRun> GstCaptureSession::run() const
{
    const std::scoped_lock lock(mutex_);
    return run_;
}

template <typename Output> std::shared_ptr<Output> GstCaptureSession::firstOutput() const
{
    for (const auto &output : outputs_) {
        if (auto found = std::dynamic_pointer_cast<Output>(output))
            return found;
    }
    return nullptr;
}

} // namespace skyflare
