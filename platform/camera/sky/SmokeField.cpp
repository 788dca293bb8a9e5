#include "platform/camera/sky/SmokeField.h"

#include "platform/camera/sky/SkyRandom.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

constexpr int side = 256;

std::size_t cell(int x, int y)
{
    return static_cast<std::size_t>((y & (side - 1)) * side + (x & (side - 1)));
}

float eased(float t)
{
    return t * t * (3.0F - 2.0F * t);
}

/// Value noise on a lattice of `cells` × `cells`, repeating.
float latticeNoise(std::uint64_t seed, int x, int y, int cells)
{
    const int pitch = side / cells;
    const int left = x / pitch;
    const int top = y / pitch;
    const auto value = [&](int i, int j) {
        return unitOf(seed + static_cast<std::uint64_t>(cells),
                      static_cast<std::uint64_t>((j % cells) * cells + i % cells));
    };
    const float fx = eased(static_cast<float>(x % pitch) / static_cast<float>(pitch));
    const float fy = eased(static_cast<float>(y % pitch) / static_cast<float>(pitch));
    const float upper = value(left, top) + (value(left + 1, top) - value(left, top)) * fx;
    const float lower = value(left, top + 1) + (value(left + 1, top + 1) - value(left, top + 1)) * fx;
    return upper + (lower - upper) * fy;
}

} // namespace

SmokeField::SmokeField(std::uint64_t seed) : density_(side * side)
{
    double sum = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            float value = 0;
            float weight = 0.5F;
            for (int cells = 4; cells <= 64; cells *= 2, weight *= 0.55F)
                value += weight * latticeNoise(spreadBits(seed ^ 0x50CEU), x, y, cells);
            density_[cell(x, y)] = value;
            sum += value;
        }
    }
    const float mean = static_cast<float>(sum / (side * side));
    for (float &density : density_)
        density = std::clamp(0.5F + (density - mean) * 1.9F, 0.0F, 1.0F);
}

float SmokeField::at(float x, float y) const
{
    const float column = (x - std::floor(x)) * side;
    const float row = (y - std::floor(y)) * side;
    const int left = static_cast<int>(column);
    const int top = static_cast<int>(row);
    const float fx = column - static_cast<float>(left);
    const float fy = row - static_cast<float>(top);
    const float upper = density_[cell(left, top)] * (1 - fx) + density_[cell(left + 1, top)] * fx;
    const float lower = density_[cell(left, top + 1)] * (1 - fx) + density_[cell(left + 1, top + 1)] * fx;
    return upper * (1 - fy) + lower * fy;
}

} // namespace skyflare
