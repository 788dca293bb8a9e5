#include "platform/base/AsioQueues.h"
#include "platform/base/MainLoop.h"
#include "tests/capture/CaptureFixture.h"

#include <doctest/doctest.h>

#include <thread>

using namespace skyflare;

namespace {

/// A clock that any thread may read; 10 ms pass with every look.
struct SteppingClock final : Clock {
    mutable std::atomic<int> looks = 0;
    [[nodiscard]] double secondsSince1970() const override { return 1e9 + 0.01 * ++looks; }
    [[nodiscard]] double secondsOfUptime() const override { return secondsSince1970(); }
};

} // namespace

TEST_CASE("commands on main and frames on videoQueue do not get into each other's way")
{
    constexpr int runs = 20;
    constexpr int framesOfRun = 100;
    const SteppingClock clock;
    RecordingConsole console;
    NotificationCenter notifications;
    const TemporaryFolder folder;
    UserDefaults defaults(folder / "settings.plist", console);
    const App app({defaults, notifications, console});
    FakeFramework camera;
    camera.photoOutput->answer = std::make_shared<const Bytes>(onePixelPng());
    MainLoop main;
    AsioQueues queues;
    StoreInFolder store(folder.path(), console, queues.globalUserInitiated());
    PhotoDataManager photos({store, notifications, clock, console});
    const auto screen = std::make_shared<RecordingDelegate>();
    std::atomic<int> captured = 0;
    std::atomic<int> measured = 0;
    std::function<void()> command; // once at first, then whenever half of a run's frames are through
    const auto manager = CaptureManager::make({main, queues, camera, clock, console, app, photos,
                                               [&](const FrameMeasurement &one) {
                                                   captured += one.captured ? 1 : 0;
                                                   if (++measured % (framesOfRun / 2) == 0)
                                                       main.async([&] { command(); });
                                               },
                                               std::chrono::nanoseconds{0}});
    manager->setViewController(screen);

    std::jthread stream;
    command = [&, run = 0]() mutable {
        manager->setRunningStatus(false);
        manager->setBrightnessThreshold(0.01 * run);
        manager->setCaptureInterval(run % 2 == 0 ? 0.05 : 0.1);
        if (const auto last = manager->captureSession())
            last->stopRunning();
        if (run >= runs) {
            if (run++ == runs)
                queues.closeThen([&] { main.quit(); });
            return;
        }
        ++run;
        manager->start();
        stream = std::jthread([session = std::static_pointer_cast<FakeSession>(manager->captureSession())] {
            for (int frame = 0; frame < framesOfRun; ++frame)
                session->show(greyFrame(frame % 2 == 0 ? 0 : 255));
        });
    };
    main.async([&] { command(); });
    main.run();

    CHECK(console.count("Capture session başlatıldı.") == runs);
    const auto withoutOutput = console.count("Photo output bulunamadı.");
    CHECK(captured > runs);
    CHECK(photos.photoCount() == captured - withoutOutput);
    CHECK(std::ssize(screen->reports) == 2 * (captured - withoutOutput));
}
