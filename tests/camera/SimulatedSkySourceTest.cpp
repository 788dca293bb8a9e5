#include "platform/camera/SimulatedSkySource.h"

#include "platform/camera/sky/SimulatedSky.h"
#include "platform/image/FrameConversion.h"
#include "tests/camera/CameraRig.h"

#include <doctest/doctest.h>

#include <cmath>
#include <sstream>

namespace skyflare {

TEST_CASE("what a user writes becomes a sky, or is refused in a line that says what would be right")
{
    struct Row {
        const char *text;
        const char *becomes;
    };
    constexpr const char *size = "a size is WIDTHxHEIGHT, each from 16 to 4096 pixels";
    constexpr const char *rate = "a rate is @FRAMES a second, from 2 to 240";
    constexpr const char *seed = "a seed is a whole number, 0 or more";
    constexpr const char *form = "write simulated:1280x720@60,seed=7, or less of it";
    static constexpr Row rows[] = {
        {"simulated", "1920x1080@30 1"},
        {"simulated:1280x720@60,seed=7", "1280x720@60 7"},
        {"simulated:@29.97", "1920x1080@29.97 1"},
        {"simulated:seed=18446744073709551615", "1920x1080@30 18446744073709551615"},
        {"simulated:16x4096", "16x4096@30 1"},
        {"simulated:", size},
        {"simulated:15x16", size},
        {"simulated:1280x4097@30", size},
        {"simulated:1280", size},
        {"simulated:1280x720x3", size},
        {"simulated:1280x720,9", size},
        {"simulated:1280x720@", rate},
        {"simulated:@1.9", rate},
        {"simulated:@nan", rate},
        {"simulated:seed=-1", seed},
        {"simulated:seed=", seed},
        {"simulatedx", form},
    };
    for (const Row &row : rows) {
        std::ostringstream became;
        if (const auto source = SimulatedSkySource::parse(row.text)) {
            const SkyParameters &sky = (*source)->parameters();
            became << sky.width << 'x' << sky.height << '@' << sky.framesPerSecond << ' ' << sky.seed;
            CHECK(became.str() == row.becomes);
        } else {
            CHECK(source.error().message ==
                  '"' + std::string(row.text) + "\" is no simulated sky: " + row.becomes);
        }
    }
}

TEST_CASE("every run gives the sky's frames from its first on, each at its time")
{
    const SkyParameters parameters{.width = 321, .height = 181, .framesPerSecond = 29.97, .seed = 3};
    SimulatedSky sky(parameters);
    CameraRig rig(std::make_shared<SimulatedSkySource>(parameters));
    rig.frames->seen = [&](const VideoFrame &frame) {
        const auto number = std::llround(double(frame.streamTime.count()) * 29.97e-9);
        CHECK(std::abs(double(frame.streamTime.count()) - double(number) / 29.97e-9) < 2);
        CHECK(convertToRgb(frame)->rgb == convertToRgb(sky.frame(number))->rgb);
        if (rig.frames->times.size() % 3 == 0)
            rig.session->stopRunning();
    };
    for (const std::size_t run : {1U, 2U, 3U}) {
        rig.start();
        REQUIRE(rig.events->waitFor(Kind::Stopped, run));
    }
    const auto format = rig.events->at(0).format;
    CHECK(std::pair(format.width, format.height) == std::pair(321, 181));
    CHECK(format.framesPerSecond == doctest::Approx(29.97));
}

} // namespace skyflare
