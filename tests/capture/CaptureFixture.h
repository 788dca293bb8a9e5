#pragma once

#include "capture/CaptureManager.h"
#include "tests/fakes/FakeCamera.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/StoreInFolder.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <vector>

namespace skyflare {

using Lines = std::vector<std::string>;

inline Bytes onePixelPng()
{
    return *encodePng(PixelBuffer{1, 1, {200, 100, 50}});
}

/// Notes every report of a manager, a line each.
struct RecordingDelegate final : LightningCaptureManagerDelegate {
    std::vector<double> lightPowers;
    std::vector<std::string> reports;

    void updateLightPower(double brightness) override { lightPowers.push_back(brightness); }
    void updateStatus(const std::optional<std::string> &text, int duration, bool isPermanent) override
    {
        reports.push_back(text.value_or("nothing") + " for " + std::to_string(duration) +
                          (isPermanent ? " s, permanent" : " s"));
    }
    void didCapturePhoto(const Image &image, std::int64_t totalPhotos, float difference) override
    {
        reports.push_back("photo of " + std::to_string(image.width()) + " px, " +
                          std::to_string(totalPhotos) + " in all, rise " + std::to_string(difference));
    }
    void sessionDidChange(const SessionEvent &event) override { reports.push_back(event.message); }
};

/// A manager over a fake camera and a real store, in virtual time. The threshold is 0.1, the interval 1 s.
struct CaptureFixture {
    VirtualTime time;
    RecordingConsole console;
    NotificationCenter notifications;
    TemporaryFolder folder;
    UserDefaults defaults{folder / "settings.plist", console};
    App app{{defaults, notifications, console}};
    StoreInFolder store{folder.path(), console, time.globalUserInitiated()};
    FakeFramework camera;
    std::shared_ptr<RecordingDelegate> screen = std::make_shared<RecordingDelegate>();
    std::vector<FrameMeasurement> measured;
    ThumbnailCache thumbnails{folder / "thumbnails", time.globalUserInitiated()};
    bool keepsThumbnails = false;
    std::shared_ptr<CaptureManager> manager = make();

    CaptureFixture()
    {
        manager->setViewController(screen);
        console.clear();
    }

    std::shared_ptr<CaptureManager> make()
    {
        return CaptureManager::make({time.mainQueue(), time, camera, time, console, app, photos(),
                                     [this](const FrameMeasurement &one) { measured.push_back(one); }});
    }
    PhotoDataManager photos()
    {
        return PhotoDataManager(
            {store, notifications, time, console, keepsThumbnails ? &thumbnails : nullptr});
    }

    [[nodiscard]] std::shared_ptr<FakeSession> session() const
    {
        return std::static_pointer_cast<FakeSession>(manager->captureSession());
    }
    /// Starts a run and waits until it is armed; what was printed on the way is forgotten.
    void startArmed()
    {
        manager->start();
        time.advance(std::chrono::seconds{2});
        console.clear();
    }
    /// Shows frames one after the other; no time passes.
    void show(const std::vector<std::uint8_t> &levels)
    {
        for (const std::uint8_t level : levels) {
            session()->show(greyFrame(level));
            time.runUntilIdle();
        }
    }
    [[nodiscard]] std::size_t photoRequests() const { return camera.photoOutput->requests.size(); }
};

} // namespace skyflare
