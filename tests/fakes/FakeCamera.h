#pragma once

#include "platform/camera/CaptureSession.h"

#include <atomic>
#include <deque>
#include <string>
#include <utility>

namespace skyflare {

/// A frame of one grey pixel, n of 255: its brightness is exactly n / 255.
inline VideoFrame greyFrame(std::uint8_t level, std::chrono::nanoseconds streamTime = {})
{
    auto pixel = std::make_shared<const Bytes>(Bytes{level});
    VideoFrame frame;
    frame.format = PixelFormat::GRAY8;
    frame.width = frame.height = 1;
    frame.planes[0] = {pixel->data(), 1};
    frame.range = ColorRange::Full;
    frame.streamTime = streamTime;
    frame.owner = std::move(pixel);
    return frame;
}

/// A camera that notes what is asked of it.
struct FakeDevice final : CaptureDevice {
    std::optional<Error> lockError;
    std::string log; ///< the focus calls, in order

    [[nodiscard]] std::string localizedName() const override { return "Fake"; }
    [[nodiscard]] DevicePosition position() const override { return DevicePosition::Back; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override { return {}; }
    Result<> lockForConfiguration() override
    {
        if (lockError)
            return *lockError;
        log += "lock ";
        return {};
    }
    void setFocusPointOfInterest(Point point) override
    {
        log += "point " + std::to_string(point.x) + ' ' + std::to_string(point.y) + ' ';
    }
    void setFocusMode(FocusMode mode) override { log += "mode " + std::to_string(int(mode)) + ' '; }
    void unlockForConfiguration() override { log += "unlock"; }
};

/// Keeps what was asked of it until the test answers.
struct FakePhotoOutput final : PhotoOutput {
    std::deque<std::shared_ptr<PhotoCaptureDelegate>> requests;
    std::shared_ptr<const Bytes> answer;    ///< where it is set, given at once, on the thread that asks
    std::shared_ptr<const Bytes> smallCopy; ///< of every photo that was asked for with one
    std::atomic<bool> wantsSmallCopy = false;

    void capturePhoto(const CapturePhotoSettings &settings,
                      std::shared_ptr<PhotoCaptureDelegate> delegate) override
    {
        wantsSmallCopy = settings.smallCopy == CapturePhotoSettings::SmallCopy::Yes;
        if (answer)
            delegate->didFinishProcessingPhoto(CapturePhoto{answer}, std::nullopt);
        else
            requests.push_back(std::move(delegate));
    }
    /// Answers the oldest request; no bytes mean that the capture failed.
    void deliver(std::shared_ptr<const Bytes> encoded, const std::optional<Error> &error = {})
    {
        const auto delegate = std::move(requests.front());
        requests.pop_front();
        delegate->didFinishProcessingPhoto({std::move(encoded), wantsSmallCopy ? smallCopy : nullptr}, error);
    }
};

/// A session whose frames and events the test sends. What it refuses is set in the framework.
struct FakeSession final : CaptureSession {
    struct Refuses {
        bool input = false;
        bool videoOutput = false;
        bool photoOutput = false;
    };

    explicit FakeSession(Refuses refused) : refuses(refused) {}

    const Refuses refuses;
    int openConfigurations = 0;
    std::vector<std::shared_ptr<CaptureDeviceInput>> inputs;
    std::vector<std::shared_ptr<CaptureOutput>> added;
    std::shared_ptr<VideoDataOutput> videoOutput;
    EventHandler eventHandler;
    std::atomic<bool> running = false;

    void beginConfiguration() override { ++openConfigurations; }
    void commitConfiguration() override { --openConfigurations; }
    [[nodiscard]] bool canAddInput(const std::shared_ptr<CaptureDeviceInput> & /*input*/) const override
    {
        return !refuses.input;
    }
    void addInput(std::shared_ptr<CaptureDeviceInput> input) override { inputs.push_back(std::move(input)); }
    [[nodiscard]] bool canAddOutput(const std::shared_ptr<CaptureOutput> &output) const override
    {
        return std::dynamic_pointer_cast<VideoDataOutput>(output) ? !refuses.videoOutput
                                                                  : !refuses.photoOutput;
    }
    void addOutput(std::shared_ptr<CaptureOutput> output) override
    {
        if (auto video = std::dynamic_pointer_cast<VideoDataOutput>(output))
            videoOutput = std::move(video);
        added.push_back(std::move(output));
    }
    [[nodiscard]] std::vector<std::shared_ptr<CaptureOutput>> outputs() const override { return added; }
    void startRunning() override { running = true; }
    void stopRunning() override { running = false; }
    [[nodiscard]] bool isRunning() const override { return running; }
    void setEventHandler(EventHandler handler) override { eventHandler = std::move(handler); }
    [[nodiscard]] FrameStatistics frameStatistics() const override { return {}; }

    /// Hands the frame to the delegate's queue, as a streaming thread does, and goes on.
    void show(VideoFrame frame) const
    {
        videoOutput->sampleBufferCallbackQueue()->async(
            [output = videoOutput, shown = preview(), frame = std::move(frame)] {
                if (shown)
                    shown->show(frame);
                if (const auto delegate = output->sampleBufferDelegate())
                    delegate->didOutputSampleBuffer(frame);
            });
    }
};

/// Sessions over one fake camera; null pointers stand for what is not there.
struct FakeFramework final : CaptureFramework {
    FakeFramework() = default;
    FakeFramework(const FakeFramework &) = delete;
    FakeFramework &operator=(const FakeFramework &) = delete;
    /// Requests that nobody answered would keep manager, session and output alive, each through the next.
    ~FakeFramework() override { photoOutput->requests.clear(); }

    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    std::shared_ptr<FakePhotoOutput> photoOutput = std::make_shared<FakePhotoOutput>();
    FakeSession::Refuses refuses;
    bool makesSessions = true;
    bool opensDevice = true;

    [[nodiscard]] std::shared_ptr<CaptureSession> makeSession() override
    {
        return makesSessions ? std::make_shared<FakeSession>(refuses) : nullptr;
    }
    [[nodiscard]] std::shared_ptr<PhotoOutput> makePhotoOutput() override { return photoOutput; }
    Result<std::shared_ptr<CaptureDeviceInput>> makeDeviceInput(std::shared_ptr<CaptureDevice> from) override
    {
        if (!opensDevice)
            return Error{"camera", 16, "the camera is in use"};
        return std::make_shared<CaptureDeviceInput>(std::move(from));
    }
    [[nodiscard]] std::shared_ptr<CaptureDevice> defaultDevice(DeviceType /*type*/,
                                                               DevicePosition /*position*/) override
    {
        return device;
    }
    [[nodiscard]] std::shared_ptr<CaptureDevice> defaultVideoDevice() override { return device; }
};

} // namespace skyflare
