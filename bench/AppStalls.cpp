// How long the app's main thread keeps its event loop waiting while it takes five photos of 12 megapixels a
// second, for 20 s.

#include "bench/AppRun.h"
#include "bench/CameraProgram.h"
#include "bench/LoopProbe.h"
#include "bench/Machine.h"
#include "bench/RingCamera.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace skyflare::bench {

namespace {

constexpr double armingSeconds = 3; ///< the start and the detection's rest; not counted
constexpr double watchedSeconds = 20;
constexpr int wantedPhotos = 100;
constexpr std::array<double, 5> limits{0.001, 0.004, 0.008, 0.016, 0.033}; ///< seconds

std::shared_ptr<RingCamera> makeCamera()
{
    const auto ring = std::make_shared<Ring>(drawRing(Ring::Format::I420, 4000, 3000, 2, Flash::AfterEach));
    ring->framesPerSecond = 10; // every second one flashes: the camera sets the pace of the photos
    return std::make_shared<RingCamera>(ring);
}

std::int64_t photosIn(const std::filesystem::path &folder)
{
    QuietConsole console;
    AsioQueues queues;
    WatchStore store(folder / "data", queues, console);
    NotificationCenter notificationCenter;
    const SystemClock clock;
    if (!store.load())
        return 0;
    return PhotoDataManager({store, notificationCenter, clock, console}).photoCount();
}

Numbers summary(const std::vector<double> &delays)
{
    Numbers numbers{{"median", median(delays)},
                    {"p99", percentile99(delays)},
                    {"largest", std::ranges::max(delays)},
                    {"count", static_cast<double>(delays.size())}};
    for (std::size_t index = 0; index < limits.size(); ++index)
        numbers["above" + std::to_string(index)] = static_cast<double>(
            std::ranges::count_if(delays, [&](double delay) { return delay > limits[index]; }));
    return numbers;
}

enum class Busy { No, Photographing };

int watchLoop(const std::filesystem::path &folder, const std::filesystem::path &file, Busy busy)
{
    LoopProbe probe;
    const auto begin = [&](AppRun &run) {
        if (busy == Busy::Photographing)
            run.pressSpace();
        run.doAfter(armingSeconds, [&probe] { probe.start(); });
        run.doAfter(armingSeconds + watchedSeconds, [&probe] {
            probe.stop();
            QCoreApplication::quit();
        });
    };
    // A tenth of a second, so that a frame that comes a little early is no lost photo.
    AppRun app(folder,
               {.camera = makeCamera(), .settings = {.sensivity = 0.05F, .frequency = 0.1}, .ready = begin});
    const int status = app.run();
    Numbers numbers = summary(probe.delays());
    numbers["photos"] = static_cast<double>(photosIn(folder));
    writeNumbers(file, numbers);
    return status;
}

std::string histogram(const Numbers &measured)
{
    std::string text;
    for (std::size_t index = 0; index < limits.size(); ++index)
        text += (index == 0 ? "" : ", ") +
                std::to_string(static_cast<int>(measured.at("above" + std::to_string(index))));
    return text + " of " + std::to_string(static_cast<int>(measured.at("count")));
}

int measure(const std::string &self)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    const WorkFolder idleFolder;
    const WorkFolder busyFolder;
    const Numbers idle = measureInProcess(self, {"--idle"}, idleFolder.path());
    const Numbers busy = measureInProcess(self, {"--photos"}, busyFolder.path());
    Table table("The app's main thread, five photos of 12 MP a second for 20 s");
    table.add({.what = "longest that the event loop was late (" +
                       std::to_string(static_cast<int>(busy.at("photos"))) + " photos)",
               .measured = duration(busy.at("largest")),
               .yardstick = "the app idle: " + duration(idle.at("largest")),
               .reach = "<= 33 ms",
               .isReached = busy.at("largest") <= 0.033});
    table.add({.what = "99 of 100; the middle",
               .measured = duration(busy.at("p99")) + "; " + duration(busy.at("median")),
               .yardstick = "idle: " + duration(idle.at("p99")) + "; " + duration(idle.at("median")),
               .reach = "<= 33 ms",
               .isReached = busy.at("p99") <= 0.033});
    table.add({.what = "later than 1, 4, 8, 16, 33 ms",
               .measured = histogram(busy),
               .yardstick = "idle: " + histogram(idle),
               .reach = "none later than 33 ms",
               .isReached = busy.at("above4") == 0});
    table.print();
    const bool areAllTaken = busy.at("photos") >= wantedPhotos;
    if (!areAllTaken)
        std::fprintf(stderr, "there are %g photos, and there should be %d\n", busy.at("photos"),
                     wantedPhotos);
    return areAllTaken ? 0 : 1;
}

} // namespace

} // namespace skyflare::bench

int main(int argc, char **argv)
{
    using namespace skyflare::bench;
    if (argc == 4 && std::strcmp(argv[1], "--idle") == 0)
        return watchLoop(argv[2], argv[3], Busy::No);
    if (argc == 4 && std::strcmp(argv[1], "--photos") == 0)
        return watchLoop(argv[2], argv[3], Busy::Photographing);
    return measure(argv[0]);
}
