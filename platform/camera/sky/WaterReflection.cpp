#include "platform/camera/sky/WaterReflection.h"

#include "platform/camera/sky/SkyParameters.h"
#include "platform/camera/sky/SmokeField.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace skyflare {

namespace {

constexpr int side = 256;            ///< of the wave texture
constexpr float waveCells = 32;      ///< of the texture, to a wave
constexpr float waveLength = 0.085F; ///< units, across
constexpr float waveDepth = 0.0135F; ///< units, from one to the next behind it
constexpr float nearest = 0.22F;     ///< share of the size that the farthest waves have
constexpr float drift = 34.0F;       ///< cells a second

} // namespace

struct WaterReflection::Row {
    float source = 0;         ///< the row above that it mirrors where the water is flat
    float amplitude = 0;      ///< rows, to full height of a wave
    std::uint32_t column = 0; ///< in the wave texture, at the left edge, 16 bits of fraction
    std::uint32_t step = 0;   ///< to the next pixel, 16 bits of fraction
    const std::int8_t *waves = nullptr;
    int strength = 0; ///< of the reflection; 256 is a mirror
};

struct WaterReflection::Plane {
    std::uint8_t *out = nullptr;
    const std::uint8_t *top = nullptr; ///< row 0 of the plane
    std::ptrdiff_t stride = 0;
    int width = 0;
    int lastRow = 0; ///< above the water
    int scale = 1;   ///< 2 for chroma
    int zero = 0;    ///< the value that stands for nothing
    int low = 0, high = 0;
    const std::int16_t *ground = nullptr;
    const std::int16_t *grain = nullptr;
};

namespace {

/// out = ground + grain + what is mirrored, weakened. One plain loop over 16-bit numbers, so that the
/// compiler takes eight at once.
template <typename Plane> void layMirrored(const Plane &plane, const std::uint8_t *mirrored, int strength)
{
    const auto zero = static_cast<std::int16_t>(plane.zero);
    const auto low = static_cast<std::int16_t>(plane.low * 64);
    const auto high = static_cast<std::int16_t>(plane.high * 64);
    const auto weight = static_cast<std::int16_t>(strength * 128);
    const std::int16_t *const ground = plane.ground;
    const std::int16_t *const grain = plane.grain;
    std::uint8_t *const out = plane.out;
    const int width = plane.width;
    for (int x = 0; x < width; ++x) {
        const auto light = static_cast<std::int16_t>((mirrored[x] - zero) * 128);
        const auto weak = static_cast<std::int16_t>((light * weight) >> 16);
        const auto sum = static_cast<std::int16_t>(ground[x] + grain[x] + weak);
        const std::int16_t inside = std::min(std::max(sum, low), high);
        out[x] = static_cast<std::uint8_t>(inside >> 6);
    }
}

} // namespace

WaterReflection::WaterReflection(const SceneLayout &layout, std::uint64_t seed)
    : layout_(layout), waves_(side * side)
{
    const SmokeField field(seed ^ 0x3A7E2U);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const float height = field.at(static_cast<float>(x) / side, static_cast<float>(y) / side) - 0.5F;
            waves_[static_cast<std::size_t>(y * side + x)] = static_cast<std::int8_t>(height * 250.0F);
        }
    }
}

WaterReflection::Row WaterReflection::rowAt(int row, double seconds) const
{
    const auto down = static_cast<float>(row - layout_.shore);
    const auto depth = static_cast<float>(layout_.height - layout_.shore);
    const float share = (down + 0.5F) / depth;
    const float size = nearest + share;
    Row result;
    result.source = static_cast<float>(layout_.shore) - 1.0F - down * (1.0F + 3.4F * share);
    result.amplitude = layout_.unit * (0.004F + 0.075F * share * share + 0.030F * share);
    const float step = waveCells / (waveLength * layout_.unit * size);
    result.step = static_cast<std::uint32_t>(step * 65536.0F);
    // Waves spread from the middle, so that those before the viewer stand upright.
    const auto middle = static_cast<float>(layout_.width) * 0.5F * step;
    const auto sideways = static_cast<float>(std::fmod(seconds * 5.0, side));
    result.column = static_cast<std::uint32_t>(static_cast<std::int64_t>((sideways - middle) * 65536.0F));
    const float behind = waveCells / waveDepth * depth / layout_.unit * std::log(size / nearest);
    const int line = static_cast<int>(static_cast<double>(behind) + std::fmod(seconds, 1024.0) * -drift);
    result.waves = waves_.data() + static_cast<std::ptrdiff_t>(line & (side - 1)) * side;
    result.strength = static_cast<int>(256.0F * (0.78F - 0.26F * share));
    return result;
}

void WaterReflection::drawRow(const Plane &plane, const Row &row) const
{
    std::array<std::uint8_t, SkyParameters::largestSide + 1> mirrored;
    std::uint32_t column = row.column;
    const std::uint32_t step = 2 * row.step * static_cast<std::uint32_t>(plane.scale);
    const int source = static_cast<int>(row.source * 128.0F) / plane.scale;
    const int amplitude = static_cast<int>(row.amplitude) / plane.scale;
    // Waves are wide enough for two pixels to look the same way.
    for (int x = 0; x < plane.width; x += 2, column += step) {
        const std::int8_t wave = row.waves[(column >> 16U) & (side - 1)];
        const int from = std::clamp((source + wave * amplitude) >> 7, 0, plane.lastRow);
        const std::uint8_t *const pair = plane.top + from * plane.stride + x;
        mirrored[static_cast<std::size_t>(x)] = pair[0];
        mirrored[static_cast<std::size_t>(x) + 1] = pair[x + 1 < plane.width ? 1 : 0];
    }
    layMirrored(plane, mirrored.data(), row.strength);
}

void WaterReflection::draw(const I420View &picture, const NightScene &scene, const SensorNoise &noise,
                           std::int64_t frame, double seconds) const
{
    for (int y = layout_.shore; y < picture.height; ++y) {
        const Row row = rowAt(y, seconds);
        drawRow({picture.luma + y * picture.lumaStride, picture.luma, picture.lumaStride, picture.width,
                 layout_.shore - 1, 1, 16, 16, 235, scene.lumaRow(y), noise.lumaRow(frame, y)},
                row);
        if (y % 2 != 0)
            continue;
        const int c = y / 2;
        const int last = layout_.shore / 2 - 1;
        const std::ptrdiff_t stride = picture.chromaStride;
        drawRow({picture.cb + c * stride, picture.cb, stride, picture.chromaWidth(), last, 2, 128, 16, 240,
                 scene.cbRow(c), noise.cbRow(frame, c)},
                row);
        drawRow({picture.cr + c * stride, picture.cr, stride, picture.chromaWidth(), last, 2, 128, 16, 240,
                 scene.crRow(c), noise.crRow(frame, c)},
                row);
    }
}

} // namespace skyflare
