#pragma once

#include "app/App.h"
#include "capture/CaptureManager.h"
#include "platform/base/AsioQueues.h"
#include "platform/base/MainLoop.h"
#include "platform/camera/GstCapture.h"
#include "platform/linux/SystemClock.h"
#include "watch/WatchStore.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>

namespace skyflare::bench {

/// Says nothing of the commentary; faults go to standard error.
class QuietConsole final : public Console {
public:
    void printLine(std::string_view) override {}
    void reportLine(std::string_view line) override;
};

/// Everything from a camera to the photo store as the programs have it, in a folder of its own.
///
/// Threads: made, run once and ended on one thread, which is main.
class CameraProgram final : public LightningCaptureManagerDelegate,
                            public std::enable_shared_from_this<CameraProgram> {
public:
    struct Options {
        std::shared_ptr<CameraSource> camera;
        std::filesystem::path folder;
        double brightnessThreshold = 0.05;
        /// On videoQueue, on the thread that has committed a photo, and on main.
        std::function<void(const FrameMeasurement &)> frameMeasured = {};
        std::function<void()> photoCommitted = {};
        /// On main: whether all that was triggered is stored.
        std::function<bool()> isSettled = [] { return true; };
    };

    explicit CameraProgram(Options options);

    /// Runs the camera for `seconds`, then without triggers until it is settled, half a minute at most.
    /// @return an error if the store cannot be opened, or the camera gives no pictures or stops by itself.
    Result<> runFor(double seconds);

    /// Before runFor(): does `work` on main, that long after the start.
    void doAfter(double seconds, std::function<void()> work);

    [[nodiscard]] FrameStatistics statistics() const { return statistics_; }
    [[nodiscard]] PhotoDataManager photos();

    void updateLightPower(double) override {}
    void updateStatus(const std::optional<std::string> &, int, bool) override {}
    void didCapturePhoto(const Image &, std::int64_t, float) override {}
    void sessionDidChange(const SessionEvent &event) override;

private:
    const Options options_;
    QuietConsole console_;
    SystemClock clock_;
    MainLoop loop_;
    AsioQueues queues_;
    NotificationCenter notificationCenter_;
    NotificationCenter::Observation observation_;
    UserDefaults defaults_;
    App app_;
    WatchStore store_;
    GstCapture framework_;
    std::shared_ptr<CaptureManager> manager_;
    FrameStatistics statistics_;
    std::optional<Error> failure_;

    void stopWhenSettled(int turnsLeft);
    void finish();
};

} // namespace skyflare::bench
