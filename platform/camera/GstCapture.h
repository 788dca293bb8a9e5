#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/camera/CameraSource.h"
#include "platform/camera/CaptureSession.h"
#include "platform/camera/GraphCount.h"

#include <memory>

namespace skyflare {

/// The capture framework on GStreamer, with the one camera that the program has chosen.
///
/// Threads: any; ended on the thread that made it, after its sessions have been let go of.
/// Borrows its queues and the gate, which must outlive it; shares the camera.
class GstCapture final : public CaptureFramework {
public:
    struct Services {
        QueueFactory &queues;
        std::shared_ptr<CameraSource> camera; ///< may be empty: there is none
        FrameGate *gate = nullptr;            ///< for a camera that paces in LockStep; may be null
    };

    explicit GstCapture(Services services);
    /// Waits until the graphs of its sessions are down, 3 s at most.
    ~GstCapture() override;

    /// Nothing where GStreamer does not start.
    [[nodiscard]] std::shared_ptr<CaptureSession> makeSession() override;
    [[nodiscard]] std::shared_ptr<PhotoOutput> makePhotoOutput() override;
    Result<std::shared_ptr<CaptureDeviceInput>>
    makeDeviceInput(std::shared_ptr<CaptureDevice> device) override;

    [[nodiscard]] std::shared_ptr<CaptureDevice> defaultDevice(DeviceType type,
                                                               DevicePosition position) override;
    [[nodiscard]] std::shared_ptr<CaptureDevice> defaultVideoDevice() override { return services_.camera; }

private:
    const Services services_;
    const std::shared_ptr<SerialQueue> controlQueue_; ///< events and watchdogs of all sessions
    const std::shared_ptr<GraphCount> graphs_ = std::make_shared<GraphCount>();
};

} // namespace skyflare
