#pragma once

#include "platform/camera/CameraSource.h"
#include "platform/camera/CaptureSession.h"
#include "platform/camera/GraphCount.h"
#include "platform/camera/GstPhotoOutput.h"

#include <memory>
#include <mutex>
#include <vector>

namespace skyflare {

class CaptureRun;

/// A session over one CameraSource: keeps the configuration, and starts a CaptureRun for each run.
///
/// Threads: as CaptureSession says. Events come on the control queue.
/// Shares its camera, outputs and queues with the run; borrows the gate and the encoding queue.
class GstCaptureSession final : public CaptureSession {
public:
    struct Services {
        std::shared_ptr<SerialQueue> controlQueue;
        DispatchQueue &encodingQueue;
        std::shared_ptr<GraphCount> graphs;
        FrameGate *gate = nullptr; ///< for LockStep; may be null
    };

    explicit GstCaptureSession(Services services);
    /// Stops, without waiting for the graph.
    ~GstCaptureSession() override;

    void beginConfiguration() override {}
    void commitConfiguration() override {}

    [[nodiscard]] bool canAddInput(const std::shared_ptr<CaptureDeviceInput> &input) const override;
    void addInput(std::shared_ptr<CaptureDeviceInput> input) override;
    /// One video output, one photo output of this framework's making.
    [[nodiscard]] bool canAddOutput(const std::shared_ptr<CaptureOutput> &output) const override;
    void addOutput(std::shared_ptr<CaptureOutput> output) override;
    [[nodiscard]] std::vector<std::shared_ptr<CaptureOutput>> outputs() const override;

    void startRunning() override;
    void stopRunning() override;
    [[nodiscard]] bool isRunning() const override;

    void setEventHandler(EventHandler handler) override;
    [[nodiscard]] FrameStatistics frameStatistics() const override;

private:
    std::shared_ptr<CaptureRun> makeRun() const;
    void report(std::vector<SessionEvent> events) const;
    [[nodiscard]] std::shared_ptr<CaptureRun> run() const;
    template <typename Output> [[nodiscard]] std::shared_ptr<Output> firstOutput() const;

    const Services services_;
    mutable std::mutex mutex_;
    std::shared_ptr<CameraSource> source_;
    std::vector<std::shared_ptr<CaptureOutput>> outputs_;
    EventHandler eventHandler_;
    std::shared_ptr<CaptureRun> run_; ///< the newest one
    bool isStoppedForGood_ = false;   ///< stopped before it was ever started
};

} // namespace skyflare
