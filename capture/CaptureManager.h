#pragma once

#include "app/App.h"
#include "capture/LightningCaptureManagerDelegate.h"
#include "platform/base/Clock.h"
#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/camera/CaptureSession.h"
#include "store/PhotoDataManager.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace skyflare {

/// What the detector made of one frame.
struct FrameMeasurement {
    std::chrono::nanoseconds streamTime{}; ///< of the frame
    double brightness = 0;                 ///< n / 255
    double difference = 0;                 ///< to the frame before
    bool triggered = false;                ///< it rose by more than the threshold while armed
    bool captured = false;                 ///< and the interval let a photo be asked for
};

/// Watches the frames of one camera session and asks for a photo when the sky flashes.
///
/// Threads: made and commanded on the main queue; frames arrive on videoQueue, one serial queue for each
///     session; photos arrive on a thread of the camera's; the delegate is called on the main queue. The
///     setters and getters may be called on any thread; a frame uses what it finds.
/// Owns its CaptureSession. Borrows its Services, which must outlive it and the queues' last work.
class CaptureManager final : public SampleBufferDelegate,
                             public PhotoCaptureDelegate,
                             public std::enable_shared_from_this<CaptureManager> {
    struct Key {};

public:
    struct Services {
        SerialQueue &mainQueue;
        QueueFactory &queues; ///< a new videoQueue for every session
        CaptureFramework &framework;
        const Clock &clock;
        Console &console;
        const App &app;
        PhotoDataManager photoDataManager;
        /// Hears of every measured frame, on videoQueue. Optional.
        std::function<void(const FrameMeasurement &)> frameMeasured = {};
        /// From start() until frames may trigger: the camera's exposure settles.
        std::chrono::nanoseconds armingDelay = std::chrono::seconds{2};
    };

    /// No session yet. Threshold and interval start from the settings.
    static std::shared_ptr<CaptureManager> make(Services services);

    /// The process's own instance, beside those that screens make. Made on first use from what
    /// setSharedServices() was given.
    static void setSharedServices(const Services &services);
    static CaptureManager &shared();

    /// Builds a new session, which replaces the one before, and arms detection after the arming delay.
    // Deliberate: a stop does not cancel the arming, so a run that is started again within the delay is
    // armed early; and the session before is not stopped here, only let go of.
    void start();
    void setupCaptureSession();

    /// Focuses once on a point of the sensor. Exposure is left alone.
    void focus(Point at);

    /// Mean red of the whole frame; green and blue do not count.
    /// @return 0 to 1 in steps of 1/255; 0.0 for a frame without pixels. Any thread.
    static double calculateBrightness(const VideoFrame &frame);

    /// The session of the latest start, running or not; nothing before.
    [[nodiscard]] std::shared_ptr<CaptureSession> captureSession() const;
    /// The receiver of reports; not kept alive.
    void setViewController(std::weak_ptr<LightningCaptureManagerDelegate> viewController);

    void setRunningStatus(bool armed) { runningStatus_.store(armed, std::memory_order_relaxed); }
    [[nodiscard]] bool runningStatus() const { return runningStatus_.load(std::memory_order_relaxed); }
    void setBrightnessThreshold(double rise) { brightnessThreshold_.store(rise, std::memory_order_relaxed); }
    [[nodiscard]] double brightnessThreshold() const
    {
        return brightnessThreshold_.load(std::memory_order_relaxed);
    }
    void setCaptureInterval(double seconds) { captureInterval_.store(seconds, std::memory_order_relaxed); }
    [[nodiscard]] double captureInterval() const { return captureInterval_.load(std::memory_order_relaxed); }

    /// A frame that is still on its way from a session that has been replaced is ignored.
    void didOutputSampleBuffer(const VideoFrame &frame) override;
    void didFinishProcessingPhoto(const CapturePhoto &photo, const std::optional<Error> &error) override;

    CaptureManager(Key, Services services); ///< for make() alone: a manager is always shared

private:
    /// A session and the queue of its frames, replaced as one.
    struct Run {
        std::shared_ptr<CaptureSession> session;
        std::shared_ptr<SerialQueue> videoQueue;
    };

    Services services_;

    mutable std::mutex mutex_; // guards the two below; held for a copy only
    Run run_;
    std::weak_ptr<LightningCaptureManagerDelegate> viewController_;

    // Relaxed: each is one number by itself. Written on main (threshold, interval, armed) or on videoQueue,
    // read on the other.
    // Deliberate: 500 is far above any frame, so the first one ever never triggers; no run resets it.
    std::atomic<double> lastBrightness_ = 500.0;
    std::atomic<double> brightnessThreshold_;
    std::atomic<double> lastCaptureTime_ = 0; // seconds since 1970
    std::atomic<double> captureInterval_;     // seconds
    std::atomic<bool> runningStatus_ = false;
    std::atomic<float> lastDifference_ = 0;
    // Deliberate: nothing fills or reads it.
    std::vector<Image> recentPhotos_;

    void replaceRun(Run run);
    bool addVideoInput(CaptureSession &session);
    void addVideoOutput(CaptureSession &session, const std::shared_ptr<SerialQueue> &videoQueue);
    void addPhotoOutput(CaptureSession &session);
    void startRunning(SerialQueue &videoQueue, const std::shared_ptr<CaptureSession> &session);
    void forwardEvents(const std::shared_ptr<CaptureSession> &session);

    [[nodiscard]] bool isOnVideoQueue() const;
    void updateLightPower(double brightness);
    /// @return whether the interval let it pass.
    bool capturePhoto();
    [[nodiscard]] std::shared_ptr<PhotoOutput> photoOutput() const;
    [[nodiscard]] std::shared_ptr<LightningCaptureManagerDelegate> viewController() const;
};

} // namespace skyflare
