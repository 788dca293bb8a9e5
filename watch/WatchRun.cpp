#include "watch/WatchRun.h"

#include <chrono>

namespace skyflare {

namespace {

constexpr auto littleRoom = "there is room for fewer than 20 more photos";

} // namespace

void WatchRun::start()
{
    startedAt_ = services_.realClock.secondsOfUptime();
    services_.logManager.logEvent(LogEvent::StartCapture);
    services_.captureManager->setViewController(weak_from_this());
    services_.captureManager->start();
    const auto session = services_.captureManager->captureSession();
    if (!session || session->outputs().empty()) {
        stopping_ = true; // there is nothing to stop
        fail("the camera cannot be used");
        return finish();
    }
    watchStorage();
    if (limits_.durationSeconds) {
        const std::chrono::duration<double> duration(*limits_.durationSeconds);
        services_.mainQueue.asyncAfter(std::chrono::duration_cast<std::chrono::nanoseconds>(duration),
                                       [weak = weak_from_this()] {
                                           if (const auto self = weak.lock())
                                               self->stop();
                                       });
    }
}

void WatchRun::watchStorage()
{
    services_.storage->begin([weak = weak_from_this()](StorageLevel level) {
        if (const auto self = weak.lock())
            self->storageDidChange(level);
    });
    services_.storage->runBegins();
}

void WatchRun::storageDidChange(StorageLevel level)
{
    if (stopping_)
        return;
    if (level == StorageLevel::Low)
        report(littleRoom);
    if (level != StorageLevel::Full)
        return;
    fail(std::string(noRoom));
    stop();
}

void WatchRun::stop()
{
    if (stopping_)
        return;
    stopping_ = true;
    services_.storage->runEnds();
    services_.captureManager->setRunningStatus(false);
    services_.logManager.logEvent(LogEvent::StopCapture);
    services_.captureManager->captureSession()->stopRunning();
}

void WatchRun::updateLightPower(double brightness)
{
    services_.report.lightPower(brightness, services_.tally.counts().lastStreamTime);
}

void WatchRun::updateStatus(const std::optional<std::string> &text, int, bool)
{
    if (text)
        services_.report.status(*text);
}

void WatchRun::didCapturePhoto(const Image &image, std::int64_t totalPhotos, float difference)
{
    announceNewPhotos(difference);
    services_.logManager.logEvent(LogEvent::CatchPhoto,
                                  {{"difference", difference}, {"totalPhotos", totalPhotos}});
    services_.autoSave.handOver(image, services_.clock.secondsSince1970(), [&console = services_.console] {
        console.reportLine("The photo library cannot be written to; the photo stays in the store.");
    });
    if (limits_.photos && photos_ >= *limits_.photos)
        stop();
}

void WatchRun::announceNewPhotos(float difference)
{
    const auto photos = services_.committedPhotos.takeNew();
    std::int64_t total = services_.photoDataManager.photoCount() - std::ssize(photos);
    for (const PhotoModel &photo : photos) {
        const auto trigger = services_.tally.takeTrigger(photo.createdDate);
        ++photos_;
        services_.report.photo(
            {.uuid = photo.uuid,
             .streamTime = trigger ? trigger->streamTime : services_.tally.counts().lastStreamTime,
             .difference = trigger ? static_cast<float>(trigger->difference) : difference,
             .total = ++total});
        if (services_.photoExport)
            services_.photoExport->add(photo);
    }
}

void WatchRun::sessionDidChange(const SessionEvent &event)
{
    switch (event.kind) {
    case SessionEvent::Kind::Started:
        framesPerSecond_ = event.format.framesPerSecond;
        services_.storage->setFrameSize(event.format.width, event.format.height);
        services_.report.started(event);
        break;
    case SessionEvent::Kind::Ended:
        stop();
        break;
    case SessionEvent::Kind::Lost:
        services_.report.lost(event);
        failed_ = true;
        stop();
        break;
    case SessionEvent::Kind::Failed:
        fail(event.message);
        stop();
        break;
    case SessionEvent::Kind::Stopped:
        if (!event.message.empty())
            report(event.message);
        drainThenFinish();
        break;
    }
}

void WatchRun::fail(const std::string &message)
{
    failed_ = true;
    report(message);
}

void WatchRun::report(const std::string &message)
{
    services_.console.reportLine("skyflare-watch: " + message);
}

void WatchRun::drainThenFinish()
{
    // Main goes on serving its loop, for stills on their way report to it.
    finishing_ = services_.queues.makeSerialQueue("finishing");
    finishing_->async([self = shared_from_this()] {
        self->services_.drainStills();
        const auto onMain = [self] { self->services_.mainQueue.async([self] { self->finish(); }); };
        // What the stills have handed to main runs before what is handed to it from here on.
        self->services_.mainQueue.async([self, onMain] {
            self->storeWhatWaits();
            if (self->services_.photoExport)
                self->services_.photoExport->finish(onMain);
            else
                onMain();
        });
    });
}

void WatchRun::storeWhatWaits()
{
    const auto stored = services_.committedPhotos.storeWhatWaits();
    announceNewPhotos(0);
    if (!stored)
        fail(stored.error().message);
}

void WatchRun::finish()
{
    const auto session = services_.captureManager->captureSession();
    const auto counts = services_.tally.counts();
    const double film = std::chrono::duration<double>(counts.lastStreamTime).count();
    const auto statistics = session ? session->frameStatistics() : FrameStatistics{};
    const bool sawFrames = statistics.delivered > 0 && framesPerSecond_ > 0;
    services_.report.summary({.frames = statistics,
                              .triggers = counts.triggers,
                              .photos = photos_,
                              .filmSeconds = sawFrames ? film + 1 / framesPerSecond_ : film,
                              .wallSeconds = services_.realClock.secondsOfUptime() - startedAt_});
    if (const auto written = services_.tally.finish(); !written)
        fail(written.error().message);
    if (services_.photoExport && services_.photoExport->failed())
        failed_ = true;
    services_.finished();
}

} // namespace skyflare
