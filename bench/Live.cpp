// What watching a live 1080p camera costs, the camera's own work apart.

#include "bench/CameraAlone.h"
#include "bench/CameraProgram.h"
#include "bench/Machine.h"
#include "bench/RingCamera.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"

#include <cstdio>

namespace skyflare::bench {

namespace {

constexpr double settlingSeconds = 1; ///< the start is not counted
constexpr double watchedSeconds = 5;
constexpr int rounds = 4;

/// What the process used of one core in the counted time; nothing if it did not run.
struct Watched {
    std::optional<double> share;
    FrameStatistics frames;
};

Watched watch(const std::shared_ptr<CameraSource> &camera)
{
    const WorkFolder folder;
    const auto program = std::make_shared<CameraProgram>(
        CameraProgram::Options{.camera = camera, .folder = folder.path(), .brightnessThreshold = 0.4});
    double processor = 0;
    double time = 0;
    double share = 0;
    program->doAfter(settlingSeconds, [&] {
        processor = processorSeconds();
        time = now();
    });
    program->doAfter(settlingSeconds + watchedSeconds,
                     [&] { share = (processorSeconds() - processor) / (now() - time); });
    if (const auto ran = program->runFor(settlingSeconds + watchedSeconds + 0.2); !ran) {
        std::fprintf(stderr, "%s\n", ran.error().description().c_str());
        return {};
    }
    if (program->photos().photoCount() > 0) {
        std::fprintf(stderr, "a photo was taken, which is not what is measured here\n");
        return {};
    }
    return {share, program->statistics()};
}

int run()
{
    // More than a second-level cache holds, so that each frame is read from where a camera puts it: memory.
    auto ring = std::make_shared<Ring>(drawRing(Ring::Format::NV12, 1920, 1080, 24, Flash::No));
    ring->framesPerSecond = 30;
    const auto camera = std::make_shared<RingCamera>(ring);
    std::vector<double> watched;
    std::vector<double> thrownAway;
    std::vector<double> differences;
    FrameStatistics frames;
    for (int round = 0; round < rounds; ++round) {
        const auto plain = shareOfCameraAlone(*camera, settlingSeconds, watchedSeconds);
        const Watched all = watch(camera);
        if (!plain || !all.share)
            return 1;
        thrownAway.push_back(*plain);
        watched.push_back(*all.share);
        differences.push_back(*all.share - *plain);
        frames.delivered += all.frames.delivered;
        frames.dropped += all.frames.dropped;
    }
    const double cost = median(differences);
    Table table("A live camera");
    table.add({.what = "1080p30 NV12, watched: share of one core beyond the camera's own",
               .measured = percent(cost),
               .yardstick = "the camera into a sink that throws away: " + percent(median(thrownAway)) +
                            "; both: " + percent(median(watched)),
               .ratio = duration(cost / ring->framesPerSecond) + " a frame",
               .reach = "<= 3 %",
               .isReached = cost <= 0.03});
    table.print();
    const double wanted = rounds * (settlingSeconds + watchedSeconds) * ring->framesPerSecond;
    const bool areAllSeen = static_cast<double>(frames.delivered + frames.dropped) >= wanted - rounds;
    if (!areAllSeen)
        std::fprintf(stderr, "the camera gave %lld frames\n",
                     static_cast<long long>(frames.delivered + frames.dropped));
    return areAllSeen ? 0 : 1;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
