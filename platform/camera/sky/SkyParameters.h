#pragma once

#include <cstdint>

namespace skyflare {

/// What a simulated sky is like.
struct SkyParameters {
    static constexpr int smallestSide = 16;
    static constexpr int largestSide = 4096;
    static constexpr double slowestRate = 2;
    static constexpr double fastestRate = 240;

    int width = 1920;  ///< pixels
    int height = 1080; ///< pixels
    double framesPerSecond = 30;
    std::uint64_t seed = 1; ///< another seed, another night
};

} // namespace skyflare
