#pragma once

#include "platform/camera/CaptureDevice.h"
#include "platform/camera/CaptureOutput.h"
#include "platform/camera/FramePreview.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// A device as a session's input.
class CaptureDeviceInput {
public:
    explicit CaptureDeviceInput(std::shared_ptr<CaptureDevice> device) : device_(std::move(device)) {}
    [[nodiscard]] const std::shared_ptr<CaptureDevice> &device() const { return device_; }

private:
    std::shared_ptr<CaptureDevice> device_;
};

/// What has become of a session that was started.
struct SessionEvent {
    enum class Kind {
        Started, ///< the first frame is there; `format` says what it is like
        Ended,   ///< a film is through
        Lost,    ///< the camera is gone
        Failed,  ///< the source could not be started or read; `message` says why
        Stopped, ///< stopRunning() has taken the graph down; the last event of a run
    };
    Kind kind{};
    std::string device;  ///< the device's name
    std::string message; ///< one line for a person; empty where there is nothing to say
    CaptureFormat format{};
};

/// Frames that a session has seen since it started.
struct FrameStatistics {
    std::int64_t delivered = 0; ///< handed to the video output's delegate
    std::int64_t dropped = 0;   ///< given by the device while the frame before was still looked at
};

/// One camera, the outputs that its pictures go to, and whether they flow.
///
/// Threads: configured on one thread, between beginConfiguration() and commitConfiguration(); the rest on
/// any thread. A session that is let go of stops.
class CaptureSession {
public:
    using EventHandler = std::function<void(const SessionEvent &)>;

    CaptureSession() = default;
    CaptureSession(const CaptureSession &) = delete;
    CaptureSession &operator=(const CaptureSession &) = delete;
    virtual ~CaptureSession() = default;

    virtual void beginConfiguration() = 0;
    virtual void commitConfiguration() = 0;

    [[nodiscard]] virtual bool canAddInput(const std::shared_ptr<CaptureDeviceInput> &input) const = 0;
    virtual void addInput(std::shared_ptr<CaptureDeviceInput> input) = 0;
    [[nodiscard]] virtual bool canAddOutput(const std::shared_ptr<CaptureOutput> &output) const = 0;
    virtual void addOutput(std::shared_ptr<CaptureOutput> output) = 0;
    /// In the order in which they were added.
    [[nodiscard]] virtual std::vector<std::shared_ptr<CaptureOutput>> outputs() const = 0;

    /// Lets the pictures flow; waits until they do, 5 s at most. Never on main.
    virtual void startRunning() = 0;
    /// Stops the pictures; returns at once and never waits for a frame. No delegate is called for a frame
    /// that begins after it. A session that is stopped before it was ever started stays stopped: a start
    /// that was still on its way to its queue gives Stopped and no pictures.
    virtual void stopRunning() = 0;
    [[nodiscard]] virtual bool isRunning() const = 0;

    /// Who hears of events, on a thread of the session's choosing. Set before startRunning().
    virtual void setEventHandler(EventHandler handler) = 0;
    [[nodiscard]] virtual FrameStatistics frameStatistics() const = 0;

    /// Who shows the live frames from now on, instead of whoever did; empty: nobody. Not kept alive. At any
    /// time: frames of a session that has a video output go to it before they are measured.
    void setPreview(std::weak_ptr<FramePreview> preview) { previewSlot_->set(std::move(preview)); }
    [[nodiscard]] std::shared_ptr<FramePreview> preview() const { return previewSlot_->get(); }

protected:
    /// For a run, which may outlive its session.
    [[nodiscard]] const std::shared_ptr<PreviewSlot> &previewSlot() const { return previewSlot_; }

private:
    const std::shared_ptr<PreviewSlot> previewSlot_ = std::make_shared<PreviewSlot>();
};

/// The cameras of this machine, and sessions over them.
///
/// Threads: any.
class CaptureFramework {
public:
    CaptureFramework() = default;
    CaptureFramework(const CaptureFramework &) = delete;
    CaptureFramework &operator=(const CaptureFramework &) = delete;
    virtual ~CaptureFramework() = default;

    /// A session without inputs and outputs, or nothing where none can be made.
    [[nodiscard]] virtual std::shared_ptr<CaptureSession> makeSession() = 0;
    [[nodiscard]] virtual std::shared_ptr<PhotoOutput> makePhotoOutput() = 0;
    virtual Result<std::shared_ptr<CaptureDeviceInput>>
    makeDeviceInput(std::shared_ptr<CaptureDevice> device) = 0;

    /// The camera of that type at that position, or what stands for it on this machine; nothing where
    /// there is no camera.
    [[nodiscard]] virtual std::shared_ptr<CaptureDevice> defaultDevice(DeviceType type,
                                                                       DevicePosition position) = 0;
    /// The default camera for video, of whatever type.
    [[nodiscard]] virtual std::shared_ptr<CaptureDevice> defaultVideoDevice() = 0;
};

} // namespace skyflare
