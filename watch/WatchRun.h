#pragma once

#include "capture/AutoSave.h"
#include "capture/CaptureManager.h"
#include "capture/StorageWatch.h"
#include "logging/LogManager.h"
#include "watch/CommittedPhotos.h"
#include "watch/FrameTally.h"
#include "watch/PhotoExport.h"
#include "watch/WatchReport.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace skyflare {

/// Why no run begins, or one ends.
inline constexpr std::string_view noRoom =
    "there is no room for more photos; delete some, or free space where they are stored";

/// One run of skyflare-watch, from start to the last line: does with each photo what the main screen would,
/// and tells the report.
///
/// Threads: main, which serves its loop until `finished` is called.
/// Borrows its Services, which must outlive it.
class WatchRun final : public LightningCaptureManagerDelegate, public std::enable_shared_from_this<WatchRun> {
public:
    struct Limits {
        std::optional<double> durationSeconds; ///< film time for a film
        std::optional<int> photos;
    };
    struct Services {
        std::shared_ptr<CaptureManager> captureManager;
        SerialQueue &mainQueue; ///< with delays in film time for a film
        QueueFactory &queues;
        std::function<void()> drainStills; ///< returns once no still is on its way any more; not on main
        const Clock &clock;                ///< dates the photos
        const Clock &realClock;            ///< measures the run
        Console &console;
        WatchReport &report;
        PhotoDataManager photoDataManager;
        CommittedPhotos &committedPhotos;
        FrameTally &tally;
        LogManager &logManager;
        AutoSave &autoSave;
        std::shared_ptr<StorageWatch> storage;
        PhotoExport *photoExport; ///< may be null
        std::function<void()> finished;
    };

    WatchRun(Services services, const Limits &limits) : services_(std::move(services)), limits_(limits) {}

    void start();

    /// Ends the run; what is on its way is still stored. A second call does nothing.
    void stop();

    /// Whether the source, or the writing of what was asked for, failed.
    [[nodiscard]] bool failed() const { return failed_; }

    void updateLightPower(double brightness) override;
    void updateStatus(const std::optional<std::string> &text, int duration, bool isPermanent) override;
    void didCapturePhoto(const Image &image, std::int64_t totalPhotos, float difference) override;
    void sessionDidChange(const SessionEvent &event) override;

private:
    Services services_;
    const Limits limits_;
    double startedAt_ = 0; ///< seconds of uptime
    double framesPerSecond_ = 0;
    std::int64_t photos_ = 0;
    bool stopping_ = false;
    bool failed_ = false;
    std::shared_ptr<SerialQueue> finishing_;

    void watchStorage();
    void storageDidChange(StorageLevel level);
    void announceNewPhotos(float difference);
    void fail(const std::string &message);
    void report(const std::string &message);
    void drainThenFinish();
    void storeWhatWaits();
    void finish();
};

} // namespace skyflare
