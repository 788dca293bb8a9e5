// What the app takes of a core while it watches a live 1080p camera, with its preview and its curve, drawn
// without a graphics card; the camera's own work apart.
//
// The app and the camera alone are processes of their own, in turn.

#include "bench/AppRun.h"
#include "bench/CameraAlone.h"
#include "bench/Machine.h"
#include "bench/RingCamera.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"

#include <QCoreApplication>
#include <QQuickWindow>
#include <cstdlib>
#include <cstring>

namespace skyflare::bench {

namespace {

constexpr double settlingSeconds = 3; ///< the start, and until detection is armed; not counted
constexpr double watchedSeconds = 8;
constexpr double framesPerSecond = 30;
constexpr int rounds = 5;

std::shared_ptr<RingCamera> makeCamera()
{
    // More than a second-level cache holds, so that each frame is read from where a camera puts it: memory.
    const auto ring = std::make_shared<Ring>(drawRing(Ring::Format::NV12, 1920, 1080, 24, Flash::No));
    ring->framesPerSecond = framesPerSecond;
    return std::make_shared<RingCamera>(ring);
}

int watchCamera(const std::filesystem::path &file)
{
    const auto share = shareOfCameraAlone(*makeCamera(), settlingSeconds, watchedSeconds);
    writeNumbers(file, {{"share", share.value_or(-1)}});
    return share ? 0 : 1;
}

int watchApp(const std::filesystem::path &folder, const std::filesystem::path &file, QSize size)
{
    double processor = 0;
    double time = 0;
    int firstFrame = 0;
    Numbers numbers;
    const auto begin = [&](AppRun &run) {
        run.doAfter(settlingSeconds, [&] {
            processor = processorSeconds();
            time = now();
            firstFrame = run.previews();
        });
        run.doAfter(settlingSeconds + watchedSeconds, [&] {
            const double seconds = now() - time;
            numbers["share"] = (processorSeconds() - processor) / seconds;
            numbers["framesShown"] = (run.previews() - firstFrame) / seconds;
            QCoreApplication::quit();
        });
    };
    AppRun app(folder, {.camera = makeCamera(),
                        .windowSize = size,
                        .ready = [](AppRun &run) { run.pressSpace(); },
                        .previewed = begin});
    const int status = app.run();
    writeNumbers(file, numbers);
    return status;
}

void addRow(Table &table, const std::string &self, int width, int height)
{
    const WorkFolder folder;
    std::vector<double> alone;
    std::vector<double> app;
    std::vector<double> differences;
    std::vector<double> shown;
    for (int round = 0; round < rounds; ++round) {
        alone.push_back(measureInProcess(self, {"--camera"}, folder.path()).at("share"));
        const Numbers measured =
            measureInProcess(self, {"--app", std::to_string(width), std::to_string(height)}, folder.path());
        app.push_back(measured.at("share"));
        shown.push_back(measured.at("framesShown"));
        differences.push_back(app.back() - alone.back());
    }
    const double cost = median(differences);
    char frames[64];
    std::snprintf(frames, sizeof frames, "%.1f previews a second", median(shown));
    table.add({.what = "1080p30 NV12 in a window of " + std::to_string(width) + " × " +
                       std::to_string(height) + ", " + frames + ": share of one core beyond the camera's own",
               .measured = percent(cost),
               .yardstick = "the camera into a sink that throws away: " + percent(median(alone)) +
                            "; both: " + percent(median(app)),
               .ratio = duration(cost / framesPerSecond) + " a frame",
               .reach = "<= 25 %",
               .isReached = cost <= 0.25});
}

int measure(const std::string &self)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    Table table("The app with a live camera, software rendering");
    addRow(table, self, 390, 844);
    addRow(table, self, 1280, 800);
    table.print();
    return 0;
}

} // namespace

} // namespace skyflare::bench

int main(int argc, char **argv)
{
    using namespace skyflare::bench;
    if (argc == 4 && std::strcmp(argv[1], "--camera") == 0)
        return watchCamera(argv[3]);
    if (argc == 6 && std::strcmp(argv[1], "--app") == 0)
        return watchApp(argv[4], argv[5], QSize(std::atoi(argv[2]), std::atoi(argv[3])));
    return measure(argv[0]);
}
