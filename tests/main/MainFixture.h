#pragma once

#include "screens/gallery/PhotoDetailViewController.h"
#include "screens/gallery/PhotoListViewController.h"
#include "screens/main/MainViewController.h"
#include "screens/settings/SettingsViewController.h"
#include "tests/fakes/FakeCamera.h"
#include "tests/fakes/FakeFreeSpace.h"
#include "tests/fakes/FakeHttpTransport.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingDesktop.h"
#include "tests/fakes/StoreInFolder.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"
#include "ui/SharedObject.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace skyflare {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

/// The screens on fakes, in virtual time, over a real store; no window. No view has been loaded.
struct MainFixture {
    VirtualTime time;
    RecordingConsole console;
    NotificationCenter notifications;
    TemporaryFolder folder;
    UserDefaults defaults{folder / "settings.plist", console};
    App app{{defaults, notifications, console}};
    StoreInFolder store{folder.path(), console, time.globalUserInitiated(), 20ms};
    FakeFreeSpace disk;
    StorageRoom storageRoom;
    FakeFramework camera;
    FakeCameraAuthorization authorization;
    FakePhotoLibrary library;
    RecordingHaptics haptics;
    RecordingIdleInhibitor idleInhibitor;
    RecordingURLOpener opener;
    RecordingStoreReview review;
    FakeHttpTransport network;
    std::shared_ptr<FIRRemoteConfig> remoteConfig =
        FIRRemoteConfig::make({network, time, time, console, folder / "config.json"});
    PhotoDataManager photoStore{{store, notifications, time, console}};
    Storyboard detailStoryboard = PhotoDetailViewController::storyboard(
        {app, photoStore, LogManager(time, console), library, time.mainQueue(), console, haptics, opener,
         review, "help@example.org"});
    Storyboard galleryStoryboard = PhotoListViewController::storyboard(
        {photoStore, notifications, time.mainQueue(), haptics, detailStoryboard});
    Storyboard settingsStoryboard = SettingsViewController::storyboard(
        {app, time.mainQueue(), console, opener, remoteConfig, "1.10", "English"});
    std::shared_ptr<MainViewController> screen = makeShared<MainViewController>(MainViewController::Services{
        .app = app,
        .standardUserDefaults = defaults,
        .notificationCenter = notifications,
        .mainQueue = time.mainQueue(),
        .queues = time,
        .clock = time,
        .console = console,
        .framework = camera,
        .store = store,
        .storage = std::make_shared<StorageWatch>(
            StorageWatch::Services{time.mainQueue(), time, notifications, disk, storageRoom, folder.path()}),
        .cameraAuthorization = authorization,
        .photoLibrary = library,
        .haptics = haptics,
        .urlOpener = opener,
        .idleInhibitor = &idleInhibitor,
        .remoteConfig = remoteConfig,
        .appInfo = {.shortVersion = "1.10",
                    .remoteConfigURL = {},
                    .storePage = "https://store.example/skyflare",
                    .supportAddress = {}},
        .settingsStoryboard = settingsStoryboard,
        .galleryStoryboard = galleryStoryboard});

    ~MainFixture()
    {
        library.asked.clear();
        screen.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // it borrows all of the above
    }

    void load()
    {
        screen->loadViewIfNeeded();
        time.runUntilIdle();
        console.clear();
    }
    [[nodiscard]] FakeSession &session() const
    {
        return static_cast<FakeSession &>(*screen->captureManager().captureSession());
    }
    /// Shows frames one after the other; no time passes.
    void show(const std::vector<std::uint8_t> &levels)
    {
        for (const std::uint8_t level : levels) {
            session().show(greyFrame(level));
            time.runUntilIdle();
        }
    }
    /// The kinds of the events that have been logged, in order.
    [[nodiscard]] Lines events() const
    {
        const std::string start = "Logged event: ";
        Lines names;
        for (const std::string &line : console.lines()) {
            if (line.starts_with(start))
                names.push_back(line.substr(start.size(), line.find(' ', start.size()) - start.size()));
        }
        return names;
    }
    /// The titles of the popups, the newest last.
    static Lines popups(ViewController &on)
    {
        Lines titles;
        for (const auto &popup : on.popups()->popups())
            titles.push_back(popup->titleLabel()->text());
        return titles;
    }
    static void tapPopup(ViewController &on) { on.popups()->popups().back()->buttonTapped(); }
    /// What the remote configuration's server says when it is asked next.
    void serveConfig(const std::string &body, int status = 200)
    {
        network.answers.push_back(
            HttpResponse{.status = status, .headers = {}, .body = Bytes(body.begin(), body.end())});
        remoteConfig->configure("https://config.example/skyflare.json");
    }
    [[nodiscard]] static Bytes onePixelPng() { return *encodePng(PixelBuffer{1, 1, {200, 100, 50}}); }
};

} // namespace skyflare
