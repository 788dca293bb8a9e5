#include "platform/camera/sky/SensorNoise.h"

#include "platform/camera/sky/SkyRandom.h"

#include <cmath>

namespace skyflare {

namespace {

constexpr std::size_t sliceCount = 1U << 15U;
constexpr float lumaDeviation = 1.7F * 64;
constexpr float chromaDeviation = 1.0F * 64;

} // namespace

SensorNoise::SensorNoise(int width, std::uint64_t seed) : seed_(spreadBits(seed ^ 0x401CEU))
{
    const std::size_t length = sliceCount + static_cast<std::size_t>(width);
    SkyRandom random(seed, 0x401CEU);
    luma_.reserve(length);
    for (std::size_t i = 0; i < length; ++i)
        luma_.push_back(static_cast<std::int16_t>(std::lrint(random.bell() * lumaDeviation)));

    // Neighbours share colour grain: each is the mean of three.
    chroma_.reserve(length);
    float before = random.bell();
    float here = random.bell();
    for (std::size_t i = 0; i < length; ++i) {
        const float after = random.bell();
        const float soft = (before + here + after) * 0.57735F;
        chroma_.push_back(static_cast<std::int16_t>(std::lrint(soft * chromaDeviation)));
        before = here;
        here = after;
    }
}

std::size_t SensorNoise::slice(std::int64_t frame, int row, std::uint64_t plane) const
{
    const auto place =
        (static_cast<std::uint64_t>(frame) << 16U) + static_cast<std::uint64_t>(row) * 3U + plane;
    return spreadBits(seed_ ^ place) % sliceCount;
}

const std::int16_t *SensorNoise::lumaRow(std::int64_t frame, int row) const
{
    return luma_.data() + slice(frame, row, 0);
}

const std::int16_t *SensorNoise::cbRow(std::int64_t frame, int row) const
{
    return chroma_.data() + slice(frame, row, 1);
}

const std::int16_t *SensorNoise::crRow(std::int64_t frame, int row) const
{
    return chroma_.data() + slice(frame, row, 2);
}

} // namespace skyflare
