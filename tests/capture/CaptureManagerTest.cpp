#include "tests/capture/CaptureFixture.h"

#include <doctest/doctest.h>

using namespace skyflare;
using namespace std::chrono_literals;

TEST_CASE("setting up says what could be had and goes on with it")
{
    struct Row {
        void (*breakIt)(FakeFramework &);
        Lines expected;
    };
    const std::string input = "Video input eklendi.";
    const std::string video = "Video output eklendi.";
    const std::string photo = "Photo output eklendi.";
    const std::string started = "Capture session başlatıldı.";
    const std::string noDevice = "Kamera giriş cihazı oluşturulamadı.";
    using Camera = FakeFramework;
    const Row rows[] = {
        {[](Camera &) {}, {input, video, photo, started}},
        {[](Camera &camera) { camera.makesSessions = false; }, {"Capture session oluşturulamadı."}},
        {[](Camera &camera) { camera.device = nullptr; }, {noDevice}},
        {[](Camera &camera) { camera.opensDevice = false; }, {noDevice}},
        {[](Camera &camera) {
             camera.refuses = {true, true, true};
         },
         {"Video input eklenemedi.", "Video output eklenemedi.", "Photo output eklenemedi.", started}},
    };
    for (const Row &row : rows) {
        CAPTURE(row.expected.back());
        CaptureFixture capture;
        row.breakIt(capture.camera);
        capture.manager->start();
        CHECK(capture.console.count(started) == 0); // not on main
        capture.time.runUntilIdle();
        CHECK(capture.console.lines() == row.expected);
        if (const auto session = capture.session()) {
            CHECK(session->openConfigurations == 0);
            CHECK(session->isRunning() == (row.expected.back() == started));
        }
    }
}

TEST_CASE("detection arms two seconds after start")
{
    CaptureFixture capture;
    capture.manager->start();
    SUBCASE("a flash before that takes no photo, but is seen")
    {
        capture.time.advance(1999ms);
        capture.show({51, 255});
        CHECK(capture.screen->lightPowers == std::vector<double>{0.2, 1.0});
        CHECK(capture.measured[1].difference == doctest::Approx(0.8));
        capture.time.advance(1ms);
        capture.show({255});
        CHECK(capture.photoRequests() == 0);
    }
    SUBCASE("a flash after that takes one photo")
    {
        capture.time.advance(2000ms);
        capture.show({51, 255, 255});
        CHECK(capture.photoRequests() == 1);
        CHECK(capture.console.lines().back() == "Fotoğraf çekme işlemi başlatıldı.");
    }
    SUBCASE("a stop does not cancel it: the next run is armed early, or at once")
    {
        capture.time.advance(500ms);
        capture.manager->setRunningStatus(false);
        capture.session()->stopRunning();
        SUBCASE("early")
        {
            capture.manager->start();
        }
        SUBCASE("at once") {}
        capture.time.advance(1499ms);
        CHECK_FALSE(capture.manager->runningStatus());
        capture.time.advance(1ms);
        CHECK(capture.manager->runningStatus());
    }
}

TEST_CASE("only a rise greater than the threshold from one frame to the next triggers")
{
    struct Row {
        double threshold;
        std::vector<std::uint8_t> levels;
        bool triggers; ///< the last frame, and none before it
    };
    const Row rows[] = {
        {0.2, {0, 51}, false},
        {0.2, {0, 52}, true},
        {0.004999999888241291, {100, 101}, false},
        {0.004999999888241291, {100, 102}, true},
        {0.1, {255, 0}, false},
        {0.1, {255}, false}, // the first ever has no frame before it
        {0.05, {0, 12, 24, 36, 48, 60, 72, 84}, false},
    };
    for (const Row &row : rows) {
        CAPTURE(row.threshold);
        CaptureFixture capture;
        capture.startArmed();
        capture.manager->setBrightnessThreshold(row.threshold);
        capture.show(row.levels);
        CHECK(capture.photoRequests() == (row.triggers ? 1 : 0));
        CHECK(capture.measured.back().triggered == row.triggers);
    }
}

TEST_CASE("threshold and interval start from the settings, brightness where the last run left it")
{
    CaptureFixture capture;
    capture.app.setSensivity(0.3F);
    capture.app.setFrequency(0.333);
    capture.manager = capture.make();
    CHECK(capture.manager->brightnessThreshold() == 0.30000001192092896);
    CHECK(capture.manager->captureInterval() == 0.333);

    capture.startArmed();
    capture.show({10});
    capture.startArmed();
    capture.show({200});
    CHECK(capture.photoRequests() == 1);
}

TEST_CASE("a frame without a picture is skipped, one that cannot be read counts as black")
{
    CaptureFixture capture;
    capture.startArmed();
    capture.show({100});
    capture.session()->show(VideoFrame{});
    capture.show({120});
    CHECK(capture.console.lines() == Lines{"Pixel buffer alınamadı."});
    CHECK(capture.photoRequests() == 0);

    VideoFrame unreadable = greyFrame(0);
    unreadable.format = PixelFormat::Jpeg;
    capture.session()->show(unreadable);
    capture.show({120});
    CHECK(capture.screen->lightPowers[2] == 0.0);
    CHECK(capture.photoRequests() == 1);
}

TEST_CASE("photos are further apart than the interval")
{
    CaptureFixture capture;
    const std::string tooEarly = "Fotoğraf çekme aralığına henüz ulaşılmadı.";
    SUBCASE("a trigger that comes too early, or exactly then, changes nothing")
    {
        capture.startArmed();
        capture.show({0, 100});
        capture.console.clear();
        capture.time.advance(500ms);
        capture.show({0, 100});
        capture.time.advance(500ms);
        capture.show({0, 200});
        CHECK(capture.console.lines() == Lines{tooEarly, tooEarly});
        CHECK(capture.measured.back().triggered);
        CHECK_FALSE(capture.measured.back().captured);
        capture.time.advance(1ms);
        capture.show({0, 100});
        CHECK(capture.photoRequests() == 2);
        CHECK(capture.measured.back().captured);
    }
    SUBCASE("a trigger without a photo output starts an interval too")
    {
        capture.camera.refuses.photoOutput = true;
        capture.startArmed();
        capture.show({0, 100, 0, 100});
        CHECK(capture.console.lines() == Lines{"Photo output bulunamadı.", tooEarly});
    }
}

TEST_CASE("a photo is stored, then reported on main with the rise of the latest trigger")
{
    CaptureFixture capture;
    capture.startArmed();
    capture.show({0, 51});
    capture.time.advance(1001ms);
    capture.show({0, 102});
    REQUIRE(capture.photoRequests() == 2);
    capture.console.clear();
    const auto png = std::make_shared<const Bytes>(onePixelPng());
    FakePhotoOutput &output = *capture.camera.photoOutput;

    SUBCASE("two in flight")
    {
        output.deliver(png, Error{"camera", 5, "not looked at"});
        CHECK(capture.photos().photoCount() == 1);
        output.deliver(png);
        CHECK(capture.screen->reports.empty());
        capture.time.runUntilIdle();
        CHECK(capture.screen->reports ==
              Lines{"Fireworks detected! for 1 s", "photo of 1 px, 1 in all, rise 0.400000",
                    "Fireworks detected! for 1 s", "photo of 1 px, 2 in all, rise 0.400000"});
        CHECK(**capture.photos().fetchImages(1).at(0).image.pngData() == *png);
    }
    SUBCASE("nobody to report to")
    {
        capture.screen.reset();
        output.deliver(png);
        capture.time.runUntilIdle();
        CHECK(capture.photos().photoCount() == 1);
    }
    SUBCASE("no data, or half of it")
    {
        output.deliver(nullptr, Error{"camera", 5, "the camera is gone"});
        output.deliver(std::make_shared<const Bytes>(png->begin(), png->begin() + std::ssize(*png) / 2));
        capture.time.runUntilIdle();
        const std::string noData = "Fotoğraf verisi alınamadı.";
        CHECK(capture.console.lines() == Lines{noData, noData});
        CHECK(capture.screen->reports.empty());
        CHECK(capture.photos().photoCount() == 0);
    }
}

TEST_CASE("a manager that is gone starts and takes nothing")
{
    CaptureFixture capture;
    capture.manager->start();
    const auto session = capture.session();
    SUBCASE("before its session was started")
    {
        capture.manager.reset();
        capture.time.advance(5s);
        CHECK_FALSE(session->isRunning());
        CHECK(capture.console.lines().back() == "Capture session başlatıldı.");
    }
    SUBCASE("between the trigger and the request")
    {
        capture.time.advance(2s);
        capture.show({0});
        session->show(greyFrame(100));
        capture.time.mainQueue().async([&] { capture.manager.reset(); }); // its delivery still holds it
        capture.time.runUntilIdle();
        CHECK(capture.measured.back().captured);
        CHECK(capture.photoRequests() == 0);
    }
}

TEST_CASE("a session that has been replaced is neither started nor heard of")
{
    CaptureFixture capture;
    capture.manager->start();
    const auto first = capture.session();
    first->eventHandler({SessionEvent::Kind::Lost, "Fake", "the camera is gone"});
    CHECK(capture.screen->reports.empty());
    capture.time.runUntilIdle();
    CHECK(capture.screen->reports == Lines{"the camera is gone"});

    first->eventHandler({SessionEvent::Kind::Stopped, "Fake", "too late"});
    capture.manager->start();
    first->show(greyFrame(1));
    const auto second = capture.session();
    capture.manager->start();
    capture.time.runUntilIdle();
    CHECK(capture.screen->reports.size() == 1);
    CHECK(capture.measured.empty());
    CHECK_FALSE(second->isRunning());
}

TEST_CASE("focusing sets the point, then focuses once; a camera that is taken is left alone")
{
    CaptureFixture capture;
    capture.manager->focus({0.25, 0.75});
    capture.camera.device->lockError = Error{"v4l2", 16, "the camera is busy"};
    capture.manager->focus({0.5, 0.5});
    CHECK(capture.camera.device->log == "lock point 0.250000 0.750000 mode 1 unlock");
    CHECK(capture.console.lines() == Lines{"Odak ayarlamada hata: the camera is busy (v4l2 16)"});
}

TEST_CASE("frames are measured to the end although main has closed")
{
    CaptureFixture capture;
    capture.startArmed();
    capture.time.close(capture.time.mainQueue());
    capture.show({0, 100});
    CHECK(capture.photoRequests() == 1);
    CHECK(capture.screen->lightPowers.empty());
}
