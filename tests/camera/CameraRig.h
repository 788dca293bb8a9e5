#pragma once

#include "platform/base/AsioQueues.h"
#include "platform/camera/GstCapture.h"
#include "platform/image/AreaAverage.h"
#include "tests/fakes/Films.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace skyflare {

using Kind = SessionEvent::Kind;

constexpr std::chrono::seconds deadline{60};

inline const std::string raw = "video/x-raw,format=NV12,width=320,height=240,framerate=30/1";
inline const std::string liveCamera = "videotestsrc is-live=true ! " + raw;

/// Events as they come; a test waits for one of them.
struct EventLog {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<SessionEvent> events;

    void add(const SessionEvent &event)
    {
        const std::scoped_lock lock(mutex);
        events.push_back(event);
        changed.notify_all();
    }
    bool waitFor(Kind kind, std::size_t count = 1)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, deadline, [&] {
            return std::size_t(std::count_if(events.begin(), events.end(),
                                             [&](const auto &event) { return event.kind == kind; })) >= count;
        });
    }
    /// Waits for it where it has not come yet.
    SessionEvent at(std::size_t index)
    {
        std::unique_lock lock(mutex);
        const bool isThere = changed.wait_for(lock, deadline, [&] { return events.size() > index; });
        return isThere ? events[index] : SessionEvent{Kind::Stopped, {}, "nothing happened", {}};
    }
    /// The event before the last one, which is Stopped.
    SessionEvent ending() { return at(size() - 2); }
    std::size_t size()
    {
        const std::scoped_lock lock(mutex);
        return events.size();
    }
    /// The message of the first event of that kind.
    std::string lineOf(Kind kind)
    {
        const std::scoped_lock lock(mutex);
        const auto found = std::ranges::find(events, kind, &SessionEvent::kind);
        return found == events.end() ? "there is none" : found->message;
    }
};

/// Notes each frame; `seen` may do more, on videoQueue.
struct FrameLog final : SampleBufferDelegate {
    std::vector<std::chrono::nanoseconds> times;
    std::vector<int> reds;
    VideoFrame last; ///< without its bytes
    std::function<void(const VideoFrame &)> seen;

    void didOutputSampleBuffer(const VideoFrame &frame) override
    {
        times.push_back(frame.streamTime);
        reds.push_back(averageRed(frame).value_or(0));
        last = frame;
        last.owner.reset();
        if (seen)
            seen(frame);
    }
};

/// Keeps the photo that comes.
struct PhotoLog final : PhotoCaptureDelegate {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<CapturePhoto> photos;
    std::string error;

    void didFinishProcessingPhoto(const CapturePhoto &photo, const std::optional<Error> &why) override
    {
        const std::scoped_lock lock(mutex);
        photos.push_back(photo);
        error = why ? why->message : "";
        changed.notify_all();
    }
    bool waitFor(std::size_t count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, deadline, [&] { return photos.size() >= count; });
    }
};

/// Whether it is a buffer that passes, not an event.
inline bool isFrame(GstPadProbeInfo *info)
{
    return (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0;
}

/// A camera made of GStreamer's own elements.
struct TestCamera : CameraSource {
    using Passing = std::function<GstPadProbeReturn(GstPadProbeInfo *)>;

    TestCamera(std::string elements, Pacing pace, Passing onPassing = {})
        : description(std::move(elements)), paces(pace), passing(std::move(onPassing))
    {
    }
    std::string description;
    Pacing paces;
    Passing passing;    ///< sees each buffer and event that leaves the camera
    std::string device; ///< unless empty, it can be opened once
    mutable std::atomic<bool> isOpen = false;
    mutable std::function<void()> remove; ///< takes the camera away from its run

    [[nodiscard]] std::string localizedName() const override { return "Test camera"; }
    [[nodiscard]] DevicePosition position() const override { return DevicePosition::Back; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override { return {}; }
    Result<> lockForConfiguration() override { return {}; }
    void setFocusPointOfInterest(Point) override {}
    void setFocusMode(FocusMode) override {}
    void unlockForConfiguration() override {}
    [[nodiscard]] Pacing pacing() const override { return paces; }
    [[nodiscard]] std::string identity() const override { return device; }
    [[nodiscard]] std::shared_ptr<void> whenRemoved(std::function<void()> removed) const override
    {
        remove = std::move(removed);
        return {};
    }
    Result<Element> makeElement() const override
    {
        Element bin(gst_parse_bin_from_description(description.c_str(), TRUE, nullptr));
        if (!bin)
            return Error{"camera", 0, "no such elements: " + description};
        gst_object_ref_sink(bin.get());
        if (!device.empty() && isOpen.exchange(true))
            return Error{"camera", 0, "opened twice"};
        const auto closed = [](gpointer flag, GObject *) { *static_cast<std::atomic<bool> *>(flag) = false; };
        g_object_weak_ref(G_OBJECT(bin.get()), closed, &isOpen);
        const Pad pad(gst_element_get_static_pad(bin.get(), "src"));
        const auto probe = [](GstPad *, GstPadProbeInfo *info, gpointer self) {
            const auto &onPassing = static_cast<const TestCamera *>(self)->passing;
            return onPassing ? onPassing(info) : GST_PAD_PROBE_OK;
        };
        gst_pad_add_probe(pad.get(),
                          GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
                          probe, const_cast<TestCamera *>(this), nullptr);
        return bin;
    }
};

/// A session on real queues, as a program sets it up.
struct CameraRig {
    explicit CameraRig(std::shared_ptr<CameraSource> source, FrameGate *gate = nullptr)
        : camera(std::move(source)), capture(GstCapture::Services{queues, camera, gate})
    {
        makeSession();
    }
    ~CameraRig() { session.reset(); }

    std::shared_ptr<EventLog> events = std::make_shared<EventLog>();
    std::shared_ptr<FrameLog> frames = std::make_shared<FrameLog>();
    AsioQueues queues;
    std::shared_ptr<CameraSource> camera;
    GstCapture capture;
    std::shared_ptr<SerialQueue> videoQueue = queues.makeSerialQueue("videoQueue");
    std::shared_ptr<CaptureSession> session;
    std::shared_ptr<PhotoOutput> photoOutput;

    void makeSession()
    {
        session = capture.makeSession();
        session->addInput(*capture.makeDeviceInput(capture.defaultVideoDevice()));
        auto video = std::make_shared<VideoDataOutput>();
        video->setSampleBufferDelegate(frames, videoQueue);
        session->addOutput(video);
        photoOutput = capture.makePhotoOutput();
        session->addOutput(photoOutput);
        session->setEventHandler([log = events](const SessionEvent &event) { log->add(event); });
    }
    void start()
    {
        videoQueue->async([running = session] { running->startRunning(); });
    }
    bool runToEnd()
    {
        start();
        return events->waitFor(Kind::Stopped);
    }
};

} // namespace skyflare
