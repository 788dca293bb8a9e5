#include "tests/capture/CaptureFixture.h"

#include <doctest/doctest.h>

#include <functional>

using namespace skyflare;
using namespace std::chrono_literals;

TEST_CASE("setting up says what could be had and goes on with it")
{
    const std::string started = "Capture session başlatıldı.";
    const auto said = [&started](const std::function<void(FakeFramework &)> &breakIt) {
        CaptureFixture capture;
        breakIt(capture.camera);
        capture.manager->start();
        CHECK(capture.console.count(started) == 0); // not on main
        capture.time.runUntilIdle();
        if (const auto session = capture.session()) {
            CHECK(session->openConfigurations == 0);
            CHECK(session->isRunning() == (capture.console.count(started) == 1));
        }
        return capture.console.lines();
    };
    using Camera = FakeFramework;
    const Lines noDevice{"Kamera giriş cihazı oluşturulamadı."};
    CHECK(said([](Camera &) {}) ==
          Lines{"Video input eklendi.", "Video output eklendi.", "Photo output eklendi.", started});
    CHECK(said([](Camera &camera) { camera.makesSessions = false; }) ==
          Lines{"Capture session oluşturulamadı."});
    CHECK(said([](Camera &camera) { camera.device = nullptr; }) == noDevice);
    CHECK(said([](Camera &camera) { camera.opensDevice = false; }) == noDevice);
    CHECK(said([](Camera &camera) {
              camera.refuses = {true, true, true};
          }) ==
          Lines{"Video input eklenemedi.", "Video output eklenemedi.", "Photo output eklenemedi.", started});
}

TEST_CASE_FIXTURE(CaptureFixture, "detection arms two seconds after start")
{
    manager->start();
    SUBCASE("a flash before that takes no photo, but is seen")
    {
        time.advance(1999ms);
        show({51, 255});
        CHECK(screen->lightPowers == std::vector<double>{0.2, 1.0});
        CHECK(measured[1].difference == doctest::Approx(0.8));
        time.advance(1ms);
        show({255});
        CHECK(photoRequests() == 0);
    }
    SUBCASE("a flash after that takes one photo")
    {
        time.advance(2000ms);
        show({51, 255, 255});
        CHECK(photoRequests() == 1);
        CHECK(console.lines().back() == "Fotoğraf çekme işlemi başlatıldı.");
    }
    SUBCASE("a stop does not cancel it: the next run is armed early, or at once")
    {
        time.advance(500ms);
        manager->setRunningStatus(false);
        session()->stopRunning();
        SUBCASE("early")
        {
            manager->start();
        }
        SUBCASE("at once") {}
        time.advance(1499ms);
        CHECK_FALSE(manager->runningStatus());
        time.advance(1ms);
        CHECK(manager->runningStatus());
    }
}

TEST_CASE("only a rise greater than the threshold from one frame to the next triggers")
{
    // Whether the last frame triggers, and none before it.
    const auto triggers = [](double threshold, const std::vector<std::uint8_t> &levels) {
        CaptureFixture capture;
        capture.startArmed();
        capture.manager->setBrightnessThreshold(threshold);
        capture.show(levels);
        CHECK(capture.photoRequests() == (capture.measured.back().triggered ? 1 : 0));
        return capture.measured.back().triggered;
    };
    CHECK_FALSE(triggers(0.2, {0, 51}));
    CHECK(triggers(0.2, {0, 52}));
    CHECK_FALSE(triggers(0.004999999888241291, {100, 101}));
    CHECK(triggers(0.004999999888241291, {100, 102}));
    CHECK_FALSE(triggers(0.1, {255, 0}));
    CHECK_FALSE(triggers(0.1, {255})); // the first ever has no frame before it
    CHECK_FALSE(triggers(0.05, {0, 12, 24, 36, 48, 60, 72, 84}));
}

TEST_CASE_FIXTURE(CaptureFixture,
                  "threshold and interval start from the settings, brightness where the last run left it")
{
    app.setSensivity(0.3F);
    app.setFrequency(0.333);
    manager = make();
    CHECK(manager->brightnessThreshold() == 0.30000001192092896);
    CHECK(manager->captureInterval() == 0.333);

    startArmed();
    show({10});
    startArmed();
    show({200});
    CHECK(photoRequests() == 1);
}

TEST_CASE_FIXTURE(CaptureFixture,
                  "a frame without a picture is skipped, one that cannot be read counts as black")
{
    startArmed();
    show({100});
    session()->show(VideoFrame{});
    show({120});
    CHECK(console.lines() == Lines{"Pixel buffer alınamadı."});
    CHECK(photoRequests() == 0);

    VideoFrame unreadable = greyFrame(0);
    unreadable.format = PixelFormat::Jpeg;
    session()->show(unreadable);
    show({120});
    CHECK(screen->lightPowers[2] == 0.0);
    CHECK(photoRequests() == 1);
}

TEST_CASE_FIXTURE(CaptureFixture, "photos are further apart than the interval")
{
    const std::string tooEarly = "Fotoğraf çekme aralığına henüz ulaşılmadı.";
    SUBCASE("a trigger that comes too early, or exactly then, changes nothing")
    {
        startArmed();
        show({0, 100});
        console.clear();
        time.advance(500ms);
        show({0, 100});
        time.advance(500ms);
        show({0, 200});
        CHECK(console.lines() == Lines{tooEarly, tooEarly});
        CHECK(measured.back().triggered);
        CHECK_FALSE(measured.back().captured);
        time.advance(1ms);
        show({0, 100});
        CHECK(photoRequests() == 2);
        CHECK(measured.back().captured);
    }
    SUBCASE("a trigger without a photo output starts an interval too")
    {
        camera.refuses.photoOutput = true;
        startArmed();
        show({0, 100, 0, 100});
        CHECK(console.lines() == Lines{"Photo output bulunamadı.", tooEarly});
    }
}

TEST_CASE_FIXTURE(CaptureFixture,
                  "a photo is stored, then reported on main with the rise of the latest trigger")
{
    startArmed();
    show({0, 51});
    time.advance(1001ms);
    show({0, 102});
    REQUIRE(photoRequests() == 2);
    console.clear();
    const auto png = std::make_shared<const Bytes>(onePixelPng());
    FakePhotoOutput &output = *camera.photoOutput;

    SUBCASE("two in flight")
    {
        output.deliver(png, Error{"camera", 5, "not looked at"});
        CHECK(photos().photoCount() == 1);
        output.deliver(png);
        CHECK(screen->reports.empty());
        time.runUntilIdle();
        CHECK(screen->reports ==
              Lines{"Fireworks detected! for 1 s", "photo of 1 px, 1 in all, rise 0.400000",
                    "Fireworks detected! for 1 s", "photo of 1 px, 2 in all, rise 0.400000"});
        CHECK(**photos().fetchImages(1).at(0).image.pngData() == *png);
    }
    SUBCASE("nobody to report to")
    {
        screen.reset();
        output.deliver(png);
        time.runUntilIdle();
        CHECK(photos().photoCount() == 1);
    }
    SUBCASE("no data, or half of it")
    {
        output.deliver(nullptr, Error{"camera", 5, "the camera is gone"});
        output.deliver(std::make_shared<const Bytes>(png->begin(), png->begin() + std::ssize(*png) / 2));
        time.runUntilIdle();
        const std::string noData = "Fotoğraf verisi alınamadı.";
        CHECK(console.lines() == Lines{noData, noData});
        CHECK(screen->reports.empty());
        CHECK(photos().photoCount() == 0);
    }
}

TEST_CASE_FIXTURE(CaptureFixture, "where small copies are kept, a photo comes with one")
{
    for (const bool isKept : {false, true}) {
        keepsThumbnails = isKept;
        manager = make();
        startArmed();
        show({0, 51});
        REQUIRE(photoRequests() == 1);
        camera.photoOutput->smallCopy = std::make_shared<const Bytes>(3, std::uint8_t{7});
        camera.photoOutput->deliver(std::make_shared<const Bytes>(onePixelPng()));
        const auto newest = photos().fetchImages(1).at(0);
        const auto copy = isKept ? newest.image.reducedPicture()->read() : nullptr;
        CHECK(std::filesystem::exists(folder / "thumbnails") == isKept);
        CHECK((copy ? *copy : Bytes()) == (isKept ? Bytes{7, 7, 7} : Bytes()));
    }
}

TEST_CASE_FIXTURE(CaptureFixture, "a manager that is gone starts and takes nothing")
{
    manager->start();
    const auto started = session();
    SUBCASE("before its session was started")
    {
        manager.reset();
        time.advance(5s);
        CHECK_FALSE(started->isRunning());
        CHECK(console.lines().back() == "Capture session başlatıldı.");
    }
    SUBCASE("between the trigger and the request")
    {
        time.advance(2s);
        show({0});
        started->show(greyFrame(100));
        time.mainQueue().async([&] { manager.reset(); }); // its delivery still holds it
        time.runUntilIdle();
        CHECK(measured.back().captured);
        CHECK(photoRequests() == 0);
    }
}

TEST_CASE_FIXTURE(CaptureFixture, "a session that has been replaced is neither started nor heard of")
{
    manager->start();
    const auto first = session();
    first->eventHandler({SessionEvent::Kind::Lost, "Fake", "the camera is gone"});
    CHECK(screen->reports.empty());
    time.runUntilIdle();
    CHECK(screen->reports == Lines{"the camera is gone"});

    first->eventHandler({SessionEvent::Kind::Stopped, "Fake", "too late"});
    manager->start();
    first->show(greyFrame(1));
    const auto second = session();
    manager->start();
    time.runUntilIdle();
    CHECK(screen->reports.size() == 1);
    CHECK(measured.empty());
    CHECK_FALSE(second->isRunning());
}

TEST_CASE_FIXTURE(CaptureFixture, "frames are measured to the end although main has closed")
{
    startArmed();
    time.closeMain();
    show({0, 100});
    CHECK(photoRequests() == 1);
    CHECK(screen->lightPowers.empty());
}
