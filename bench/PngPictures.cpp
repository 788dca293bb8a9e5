#include "bench/PngPictures.h"

#include "platform/camera/sky/SimulatedSky.h"
#include "platform/camera/sky/SkyRandom.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace skyflare::bench {
namespace {

constexpr int width = 4000;
constexpr int height = 3000;

using Color = std::array<double, 3>;

PixelBuffer painted(const std::function<Color(int x, int y)> &colorAt)
{
    PixelBuffer picture = PixelBuffer::ofSize(width, height);
    std::uint8_t *byte = picture.rgb.data();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (const double channel : colorAt(x, y))
                *byte++ = static_cast<std::uint8_t>(std::lrint(std::clamp(channel, 0.0, 255.0)));
        }
    }
    return picture;
}

/// Dusk over houses with lit windows, and the glow of three bursts with their rays.
Color renderedScene(int x, int y)
{
    const int house = x / 180;
    const int roof = 2100 + static_cast<int>(spreadBits(static_cast<std::uint64_t>(house)) % 500);
    if (y > roof) {
        const bool isWindow = x % 60 > 20 && x % 60 < 45 && y % 80 > 30 && y % 80 < 65;
        const auto number = static_cast<std::uint64_t>(x / 60 * 1000 + y / 80);
        return isWindow && spreadBits(number) % 3 == 0 ? Color{230, 180, 90} : Color{18, 16, 24};
    }
    Color color{20 + 0.018 * y, 14 + 0.011 * y, 44 + 0.006 * y};
    constexpr std::array<std::array<double, 3>, 3> bursts{
        {{900, 800, 1}, {2300, 1200, 0.7}, {3200, 500, 1.3}}};
    for (const auto &[burstX, burstY, strength] : bursts) {
        const double distance = std::hypot(x - burstX, y - burstY) / (400 * strength);
        const double angle = std::atan2(y - burstY, x - burstX);
        const double ray = std::pow(std::abs(std::cos(18 * angle)), 40) * (distance < 1 ? 1 - distance : 0);
        const double light = 120 * std::exp(-distance * distance) + 200 * ray;
        color = {color[0] + light, color[1] + 0.7 * light, color[2] + 0.35 * light};
    }
    return color;
}

} // namespace

VideoFrame nightFrame()
{
    SkyParameters parameters;
    parameters.width = width;
    parameters.height = height;
    parameters.seed = 20260101;
    SimulatedSky sky(parameters);
    return sky.frame(sky.burstFrames(10)[3] + 6);
}

PixelBuffer withNoise(PixelBuffer picture, float deviation)
{
    SkyRandom random(1, 7);
    for (std::uint8_t &byte : picture.rgb) {
        const long noisy = byte + std::lrint(random.bell() * deviation);
        byte = static_cast<std::uint8_t>(std::clamp(noisy, 0L, 255L));
    }
    return picture;
}

std::vector<NamedPicture> cleanPictures()
{
    std::vector<NamedPicture> pictures;
    const auto add = [&pictures](const char *name, const std::function<Color(int, int)> &colorAt) {
        pictures.push_back({name, painted(colorAt)});
    };
    add("one colour", [](int, int) { return Color{12, 10, 30}; });
    add("areas of one colour", [](int x, int y) {
        const std::uint64_t bits = spreadBits(static_cast<std::uint64_t>(x / 250 * 64 + y / 190));
        return Color{static_cast<double>(bits % 256), static_cast<double>(bits >> 8U & 255U),
                     static_cast<double>(bits >> 16U & 255U)};
    });
    add("gradient across", [](int x, int) { return Color{x * 0.06, x * 0.03, 200 - x * 0.04}; });
    add("gradient down", [](int, int y) { return Color{y * 0.08, y * 0.04, 200 - y * 0.05}; });
    add("gradient aslant", [](int x, int y) {
        return Color{x * 0.03 + y * 0.04, x * 0.02 + y * 0.01, 200 - x * 0.02 - y * 0.03};
    });
    add("rendered scene", &renderedScene);
    return pictures;
}

} // namespace skyflare::bench
