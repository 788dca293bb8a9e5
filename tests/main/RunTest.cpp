#include "tests/main/MainFixture.h"

#include <doctest/doctest.h>

using namespace skyflare;

TEST_CASE_FIXTURE(MainFixture, "a run starts and stops with the main button")
{
    load();
    haptics.impacts.clear();
    screen->mainButtonTapped();
    CHECK(screen->isRunning());
    CHECK(haptics.impacts == std::vector{ImpactFeedbackStyle::Medium});
    CHECK(screen->infoBar()->isHidden());
    CHECK(screen->previewLayer() != nullptr);
    CHECK(events() == Lines{"start_capture"});
    CHECK_FALSE(idleInhibitor.newest.expired());
    time.runUntilIdle();
    CHECK(session().isRunning());

    time.advance(2s);
    CHECK(screen->captureManager().runningStatus());
    FakeSession &first = session();
    screen->onboardingView()->setHidden(true);
    screen->startStopKeyPressed();
    CHECK_FALSE(screen->isRunning());
    CHECK_FALSE(first.isRunning());
    CHECK_FALSE(screen->captureManager().runningStatus());
    CHECK_FALSE(screen->infoBar()->isHidden());
    CHECK(screen->previewLayer() == nullptr);
    CHECK(idleInhibitor.newest.expired());

    screen->mainButtonTapped();
    CHECK(idleInhibitor.reasons == Lines(2, "Watching the sky for fireworks"));
    notifications.postNotificationName("UIApplicationWillResignActiveNotification");
    notifications.postNotificationName("UIApplicationWillResignActiveNotification");
    CHECK(events() == Lines{"start_capture", "stop_capture", "start_capture", "stop_capture"});
    CHECK(idleInhibitor.newest.expired());
}

TEST_CASE_FIXTURE(MainFixture, "a run needs the permission to use the camera")
{
    load();
    SUBCASE("asked for, and granted to two taps")
    {
        authorization.status = CameraAuthorizationStatus::NotDetermined;
        screen->mainButtonTapped();
        screen->mainButtonTapped();
        for (const auto &answer : authorization.waiting)
            answer(true);
        CHECK_FALSE(screen->isRunning()); // the answer comes on any thread
        time.runUntilIdle();
        CHECK(screen->isRunning());
        CHECK(events() == Lines{"start_capture"});
    }
    SUBCASE("asked for, and refused")
    {
        authorization.status = CameraAuthorizationStatus::NotDetermined;
        screen->mainButtonTapped();
        authorization.waiting.at(0)(false);
        time.runUntilIdle();
        CHECK(popups(*screen) == Lines{"We need your permission"});
    }
    SUBCASE("denied before")
    {
        authorization.status = CameraAuthorizationStatus::Denied;
        screen->mainButtonTapped();
        CHECK(popups(*screen) == Lines{"Camera permission is not granted"});
        tapPopup(*screen);
        CHECK(opener.opened == Lines{"app-settings:"});
        CHECK(events().empty());
    }
}

TEST_CASE_FIXTURE(MainFixture, "a burst is seen, felt, counted and logged")
{
    load();
    app.setAutoSave(true);
    camera.photoOutput->answer = std::make_shared<const Bytes>(onePixelPng());
    screen->mainButtonTapped();
    time.advance(2s);
    haptics.impacts.clear();
    console.clear();

    show({20, 71}); // n of 255: a rise of 0.2
    CHECK(screen->lightPowerLabel()->text() == "0.28");
    CHECK(screen->lightCurve()->samples().size() == 2);
    CHECK(screen->statusText()->text() == "Fireworks detected!");
    CHECK(screen->lastDifferenceLabel()->text() == "0.20");
    CHECK(screen->captureFlashes() == 1);
    CHECK(screen->actionImage()->alpha() == 0);
    CHECK(screen->photoCountLabel()->text() == "1");
    CHECK_FALSE(screen->lastPhotoContainer()->isHidden());
    CHECK(screen->lastPhotoImageView()->hasImage());
    CHECK(haptics.impacts == std::vector{ImpactFeedbackStyle::Heavy});
    CHECK(events() == Lines{"catch_photo", "photo_auto_saved"});
    time.advance(999ms);
    CHECK(screen->statusText()->text() == "Fireworks detected!");
    time.advance(1ms);
    CHECK(screen->statusText()->text() == "Ready to capture fireworks...");

    // Each time that the library refuses, and on main alone.
    REQUIRE(library.asked.size() == 1);
    library.asked[0](AuthorizationStatus::Denied);
    CHECK(popups(*screen).empty());
    library.asked[0](AuthorizationStatus::Limited);
    time.runUntilIdle();
    CHECK(popups(*screen) == Lines(2, "We need your permission"));
    CHECK(library.assetDates.empty());
    console.clear();
    library.asked[0](AuthorizationStatus::Authorized);
    library.change = {false, Error{"library", 28, "no space left on the device"}};
    library.asked[0](AuthorizationStatus::Authorized);
    CHECK(library.assetDates == std::vector(2, 1'700'000'002.0));
    CHECK(console.lines() == Lines{"Fotoğraf başarıyla galeriye kaydedildi.",
                                   "Fotoğraf galeriye kaydedilemedi: no space left on the device"});
    CHECK(popups(*screen).size() == 2);
}

TEST_CASE_FIXTURE(MainFixture, "a lost camera ends the run and says so, and the next start is a new try")
{
    load();
    screen->mainButtonTapped();
    time.advance(2s);
    screen->updateStatus("Fireworks detected!", 1, false);
    const auto tell = [this](SessionEvent::Kind kind) {
        session().eventHandler({.kind = kind, .device = "Webcam", .message = "it broke", .format = {}});
        time.runUntilIdle();
    };
    console.clear();

    tell(SessionEvent::Kind::Lost);
    CHECK_FALSE(screen->isRunning());
    CHECK(events() == Lines{"stop_capture"});
    CHECK(idleInhibitor.newest.expired());
    CHECK(console.reports() == Lines{"it broke"});
    const std::string gone = "The camera is gone. Connect it again, then tap Start.";
    CHECK(screen->statusText()->text() == gone);
    CHECK(screen->isStatusWarning());
    time.advance(5s); // what was to be shown for a second does not wipe it out
    CHECK(screen->statusText()->text() == gone);

    screen->mainButtonTapped();
    CHECK(screen->isRunning());
    CHECK_FALSE(screen->isStatusWarning());
    CHECK(screen->statusText()->text() == "Ready to capture fireworks...");

    SUBCASE("it is still away")
    {
        tell(SessionEvent::Kind::Failed);
        CHECK_FALSE(screen->isRunning());
        CHECK(screen->statusText()->text().starts_with("The camera does not answer."));
    }
    SUBCASE("news of a run that the user has ended is no warning")
    {
        screen->mainButtonTapped();
        tell(SessionEvent::Kind::Lost);
        CHECK_FALSE(screen->isStatusWarning());
    }
}

TEST_CASE_FIXTURE(MainFixture, "a camera that cannot be opened ends the run at once")
{
    load();
    SUBCASE("no device")
    {
        camera.opensDevice = false;
        screen->mainButtonTapped();
        CHECK(console.count("Kamera giriş cihazı oluşturulamadı.") == 1);
    }
    SUBCASE("no session")
    {
        camera.makesSessions = false;
        screen->mainButtonTapped();
        CHECK(console.count("Capture session mevcut değil.") == 1);
    }
    CHECK_FALSE(screen->isRunning());
    CHECK(screen->isStatusWarning());
    CHECK(events() == Lines{"start_capture", "stop_capture"});
}

TEST_CASE_FIXTURE(MainFixture, "a tap focuses while a run is on and the setting is on")
{
    load();
    screen->focusPointTapped({100, 200});
    screen->mainButtonTapped();
    screen->focusPointTapped({100, 200});
    CHECK(screen->focusView() == nullptr);
    CHECK(camera.device->log.empty());

    app.setManualFocus(true);
    screen->focusPointTapped({100, 200});
    // Before there is a frame, the middle of the sensor.
    CHECK(camera.device->log == "lock point 0.500000 0.500000 mode 1 unlock");
    REQUIRE(screen->focusView() != nullptr);
    CHECK(screen->focusView()->center() == QPointF(100, 200));

    time.advance(1s);
    screen->focusPointTapped({10, 20});
    const FocusView *const second = screen->focusView();
    CHECK(second->center() == QPointF(10, 20));
    time.advance(1599ms); // the end of the first one does not take the second away
    CHECK(screen->focusView() == second);
    time.advance(1ms);
    CHECK(screen->focusView() == nullptr);

    camera.device->lockError = Error{"v4l2", 16, "the camera is busy"};
    screen->focusPointTapped({10, 20});
    CHECK(console.lines().back() == "Odak ayarlamada hata: the camera is busy (v4l2 16)");
    screen->mainButtonTapped();
    CHECK(screen->focusView() == nullptr);
}

TEST_CASE_FIXTURE(MainFixture, "a run ends, and none begins, where there is no room for two more photos")
{
    load();
    camera.photoOutput->answer = std::make_shared<const Bytes>(onePixelPng());
    const std::uint64_t photo = camera.photoOutput->answer->size();
    screen->mainButtonTapped();
    time.advance(2s);
    disk.bytes = 20 * photo; // one of them is kept back
    show({20, 71});
    time.advance(1001ms);
    CHECK(screen->isRunning());
    const std::string little = "The storage is almost full: there is room for fewer than 20 more photos.";
    CHECK(screen->statusText()->text() == little);
    CHECK(screen->isStatusWarning());

    console.clear();
    disk.bytes = 3 * photo - 1;
    show({20, 71});
    CHECK_FALSE(screen->isRunning());
    CHECK(events() == Lines{"catch_photo", "stop_capture"});
    CHECK(screen->photoCountLabel()->text() == "2"); // nothing is lost
    CHECK(library.asked.empty());                    // auto-save is off
    CHECK(popups(*screen) == Lines{"No room for more photos"});
    time.runUntilIdle();
    tapPopup(*screen);
    CHECK(screen->presentedViewController() != nullptr); // the gallery
    screen->dismiss(Animated::No);

    screen->mainButtonTapped();
    time.runUntilIdle();
    CHECK_FALSE(screen->isRunning());
    CHECK(popups(*screen).size() == 1);
    disk.bytes = 20 * photo;
    screen->mainButtonTapped(); // somebody has made room
    time.advance(1s);           // over what was said of the last photo
    CHECK(screen->isRunning());
    CHECK(screen->statusText()->text() == little);
    disk.bytes = 21 * photo;
    time.advance(5s);
    CHECK_FALSE(screen->isStatusWarning());

    screen->mainButtonTapped();
    authorization.status = CameraAuthorizationStatus::NotDetermined;
    screen->mainButtonTapped();
    disk.bytes = 0; // while the user makes up their mind
    notifications.postNotificationName("CountDidChange");
    time.runUntilIdle();
    authorization.waiting.at(0)(true);
    time.runUntilIdle();
    CHECK_FALSE(screen->isRunning());
    CHECK(popups(*screen) == Lines(2, "No room for more photos"));
}
