// How long a photo of 12 megapixels takes from its trigger to its row in the store, and whether five a second
// go on for twenty seconds without a lost frame.

#include "bench/CameraProgram.h"
#include "bench/Machine.h"
#include "bench/RingCamera.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/image/Image.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

namespace skyflare::bench {

namespace {

constexpr int width = 4000;
constexpr int height = 3000;
constexpr double armingSeconds = 2;

/// When each trigger was seen and each row committed; the n-th row is taken for the n-th trigger's.
struct Times {
    std::mutex mutex;
    std::vector<double> triggers;
    std::vector<double> rows;

    [[nodiscard]] std::vector<double> latencies() const
    {
        std::vector<double> seconds;
        for (std::size_t index = 0; index < std::min(triggers.size(), rows.size()); ++index)
            seconds.push_back(rows[index] - triggers[index]);
        return seconds;
    }
};

struct Outcome {
    std::vector<double> latencies; ///< seconds
    FrameStatistics frames;
    std::size_t photos = 0;
    std::uint64_t peakMemory = 0;
    std::uint64_t photoBytes = 0; ///< of all together
    bool isRight = false;         ///< each trigger has its row, and the rows are whole pictures
};

bool areWhole(const std::vector<PhotoModel> &photos)
{
    return std::ranges::all_of(photos, [](const PhotoModel &photo) {
        return photo.image.width() == width && photo.image.height() == height;
    });
}

Outcome photograph(const std::shared_ptr<const Ring> &ring, double seconds)
{
    const WorkFolder folder;
    const auto times = std::make_shared<Times>();
    const auto program = std::make_shared<CameraProgram>(
        CameraProgram::Options{.camera = std::make_shared<RingCamera>(ring),
                               .folder = folder.path(),
                               .frameMeasured =
                                   [times](const FrameMeasurement &measured) {
                                       const std::scoped_lock lock(times->mutex);
                                       if (measured.captured)
                                           times->triggers.push_back(now());
                                   },
                               .photoCommitted =
                                   [times] {
                                       const std::scoped_lock lock(times->mutex);
                                       times->rows.push_back(now());
                                   },
                               .isSettled =
                                   [times] {
                                       const std::scoped_lock lock(times->mutex);
                                       return times->rows.size() >= times->triggers.size();
                                   }});
    forgetPeak();
    const auto ran = program->runFor(armingSeconds + seconds);
    Outcome outcome{.latencies = times->latencies(),
                    .frames = program->statistics(),
                    .photos = times->rows.size(),
                    .peakMemory = peakMemory()};
    if (!ran) {
        std::fprintf(stderr, "%s\n", ran.error().description().c_str());
        return outcome;
    }
    const auto photos = program->photos().fetchImages(0);
    for (const PhotoModel &photo : photos)
        outcome.photoBytes += (*photo.image.pngData())->size();
    outcome.isRight = times->triggers.size() == times->rows.size() &&
                      std::ssize(photos) == std::ssize(times->rows) && !photos.empty() && areWhole(photos);
    return outcome;
}

/// The least that a photo costs: its pixels encoded once, and its bytes written once and synced.
struct Yardstick {
    double encoding = 0;
    double writing = 0;
};

Yardstick measureYardstick(const Ring &ring)
{
    const WorkFolder folder;
    const Bytes &picture = ring.pictures.front();
    const std::size_t lumaSize = std::size_t{width} * height;
    VideoFrame frame{.format = PixelFormat::I420, .width = width, .height = height};
    frame.planes = {{{picture.data(), width},
                     {picture.data() + lumaSize, width / 2},
                     {picture.data() + lumaSize * 5 / 4, width / 2}}};
    std::vector<double> encoding;
    std::vector<double> writing;
    for (int round = 0; round < 7; ++round) {
        const double start = now();
        const auto png = encodePng(frame);
        encoding.push_back(now() - start);
        writing.push_back(writeAndSync(folder.path(), *png));
    }
    return {median(encoding), median(writing)};
}

Table::Row latencyRow(const Outcome &outcome, const Yardstick &yardstick)
{
    const double p95 = percentile95(outcome.latencies);
    const double parts = yardstick.encoding + yardstick.writing;
    return {.what = "12 MP photo, trigger to committed row, 95 of 100 (30 frames a second, " +
                    std::to_string(outcome.photos) + " photos, median " +
                    duration(median(outcome.latencies)) + ")",
            .measured = duration(p95),
            .yardstick = "encoding alone " + duration(yardstick.encoding) + " + plain write and fsync " +
                         duration(yardstick.writing),
            .ratio = ratio(p95 / parts),
            .reach = "<= 150 ms",
            .isReached = p95 <= 0.150};
}

Table::Row burstRow(const Outcome &outcome, double seconds)
{
    return {.what = "12 MP at 10 frames a second, five photos a second for 20 s: photos, frames lost",
            .measured = std::to_string(outcome.photos) + ", " + std::to_string(outcome.frames.dropped),
            .yardstick = megabytes(outcome.photoBytes / std::max<std::size_t>(outcome.photos, 1)) +
                         " a photo; 95 of 100 stored in " + duration(percentile95(outcome.latencies)),
            .ratio = {},
            .reach = ">= " + std::to_string(static_cast<int>(seconds * 5) - 1) + ", 0",
            .isReached =
                outcome.photos + 1 >= static_cast<std::size_t>(seconds * 5) && outcome.frames.dropped == 0};
}

int run()
{
    constexpr double seconds = 20;
    Table table("A photo, end to end");
    // One ring for both, changed in between, when no camera has it: it is a good part of the memory.
    const auto ring =
        std::make_shared<Ring>(drawRing(Ring::Format::I420, width, height, 2, Flash::AfterEach));

    ring->framesPerSecond = 10;
    const Outcome burst = photograph(ring, seconds);
    ring->framesPerSecond = 30;
    ring->order = {0, 2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 1}; // a flash about every half second
    const Outcome single = photograph(ring, seconds);
    if (burst.latencies.empty() || single.latencies.empty()) {
        std::fprintf(stderr, "no photo was taken\n");
        return 1;
    }
    table.add(latencyRow(single, measureYardstick(*ring)));
    table.add(burstRow(burst, seconds));
    table.add({.what = "most memory in those 20 s",
               .measured = megabytes(burst.peakMemory),
               .yardstick = "of it the ring's pictures: " + megabytes(ring->bytes()),
               .ratio = {},
               .reach = "<= 600 MB",
               .isReached = burst.peakMemory <= 600'000'000});
    table.print();
    if (!burst.isRight || !single.isRight)
        std::fprintf(stderr, "a trigger has no row, or a row is no whole picture\n");
    return burst.isRight && single.isRight ? 0 : 1;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
