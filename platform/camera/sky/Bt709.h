#pragma once

#include "platform/camera/sky/LightColor.h"

#include <cmath>
#include <cstdint>

namespace skyflare {

/// A colour as differences from black in the units of a limited-range picture, 64 steps to each.
struct YCbCr64 {
    std::int16_t luma = 0; ///< 0 to 219 · 64
    std::int16_t cb = 0;   ///< ±112 · 64
    std::int16_t cr = 0;   ///< ±112 · 64
};

/// ITU-R BT.709, from display values of 0 to 1; what lies beyond is kept as long as it fits.
inline YCbCr64 bt709(LightColor color)
{
    const float luma = 0.2126F * color.red + 0.7152F * color.green + 0.0722F * color.blue;
    const auto fixed = [](float value) { return static_cast<std::int16_t>(std::lrint(value * 64.0F)); };
    return {fixed(luma * 219.0F), fixed((color.blue - luma) * (224.0F / 1.8556F)),
            fixed((color.red - luma) * (224.0F / 1.5748F))};
}

} // namespace skyflare
