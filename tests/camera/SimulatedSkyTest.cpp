#include "platform/camera/sky/SimulatedSky.h"

#include "platform/image/AreaAverage.h"

#include <doctest/doctest.h>

#include <cstring>
#include <set>

namespace skyflare {

namespace {

std::vector<double> brightnessOf(SimulatedSky &sky, double seconds)
{
    std::vector<double> levels;
    const auto count = std::int64_t(seconds * sky.parameters().framesPerSecond);
    for (std::int64_t number = 0; number < count; ++number)
        levels.push_back(averageRed(sky.frame(number)).value_or(0) / 255.0);
    return levels;
}

bool sameBytes(const VideoFrame &a, const VideoFrame &b)
{
    // The planes follow each other without gaps.
    const auto size = std::size_t(a.planes[2].data - a.planes[0].data) +
                      std::size_t(a.planes[2].stride) * std::size_t((a.height + 1) / 2);
    return std::memcmp(a.planes[0].data, b.planes[0].data, size) == 0;
}

} // namespace

TEST_CASE("a frame follows from the parameters and its number alone")
{
    const SkyParameters parameters{.width = 241, .height = 135, .framesPerSecond = 30, .seed = 7};
    SimulatedSky forwards(parameters);
    SimulatedSky backwards(parameters);
    SimulatedSky otherNight({.width = 241, .height = 135, .framesPerSecond = 30, .seed = 8});
    const std::vector<std::int64_t> numbers{0, 1, 2, 40, 41, 300, 7'776'000}; // the last is three days on
    std::vector<VideoFrame> expected;
    for (const std::int64_t number : numbers)
        expected.push_back(forwards.frame(number));
    for (std::size_t i = numbers.size(); i-- > 0;) {
        CAPTURE(numbers[i]);
        CHECK(sameBytes(backwards.frame(numbers[i]), expected[i]));
        CHECK_FALSE(sameBytes(otherNight.frame(numbers[i]), expected[i]));
    }
    CHECK_FALSE(sameBytes(expected[0], expected[1]));
    CHECK(forwards.burstFrames(30) != otherNight.burstFrames(30));
    CHECK(expected[3].streamTime == std::chrono::nanoseconds(1'333'333'333));
}

TEST_CASE("a burst's first frame is a jump, and there is no other")
{
    struct Row {
        SkyParameters parameters;
        double seconds;
        double greatestOtherRise;
    };
    static constexpr Row rows[] = {{{320, 180, 30, 1}, 60, 0.03}, {{320, 180, 30, 2}, 20, 0.03},
                                   {{640, 360, 10, 3}, 20, 0.03}, {{101, 57, 120, 4}, 8, 0.03},
                                   {{180, 320, 24, 5}, 15, 0.03}, {{16, 16, 29.97, 6}, 30, 0.03},
                                   {{320, 180, 5, 7}, 30, 0.05},  {{1920, 1080, 30, 8}, 2.2, 0.03}};
    for (const Row &row : rows) {
        CAPTURE(row.parameters.seed);
        SimulatedSky sky(row.parameters);
        const std::vector<double> levels = brightnessOf(sky, row.seconds);
        const auto frames = sky.burstFrames(row.seconds);
        const std::set<std::int64_t> bursts(frames.begin(), frames.end());
        const auto times = sky.burstTimes(600);
        CHECK(times.at(0) <= 1.0);
        for (std::size_t i = 1; i < times.size(); ++i) {
            const double gap = times[i] - times[i - 1];
            CHECK((gap > 1.0999 && gap < 1.5001));
        }
        for (std::size_t number = 1; number < levels.size(); ++number) {
            CAPTURE(number);
            const double rise = levels[number] - levels[number - 1];
            const bool isBurst = bursts.contains(std::int64_t(number));
            if (isBurst) {
                CHECK(rise > 0.10);
                CHECK(rise < 0.25);
            } else {
                CHECK(rise < row.greatestOtherRise);
            }
            // Nor would it be one if the frame before had been lost, and a burst's second frame still is.
            const bool afterBurst = bursts.contains(std::int64_t(number) - 1);
            if (number < 2 || isBurst || row.parameters.framesPerSecond < 10)
                continue;
            if (!afterBurst)
                CHECK(levels[number] - levels[number - 2] < 0.05);
            else if (row.parameters.framesPerSecond >= 24)
                CHECK(levels[number] - levels[number - 2] > 0.06);
        }
    }
}

} // namespace skyflare
