#pragma once

#include "platform/camera/sky/LightColor.h"
#include "platform/camera/sky/ShellKind.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// All that is decided about one shell before it is fired.
struct ShellPlan {
    std::uint64_t id = 0;        ///< also the seed of its stars
    std::int64_t breakFrame = 0; ///< for a burst: the first frame that shows its light
    double breakSeconds = 0;     ///< since the start; before it for the shells that are up already
    bool flashes = false;        ///< a burst; the others open softly
    const ShellKind *kind = nullptr;
    float x = 0;      ///< share of the picture's width
    float y = 0;      ///< share of the height above the water
    float radius = 0; ///< share of the scene's unit
    float riseSeconds = 0;
    float fromX = 0; ///< share of the picture's width: where it was fired
    LightColor color;
    LightColor laterColor; ///< what its stars change to
    LightColor pistilColor;
    float flashMeanRed = 0; ///< what the flash adds to the mean red of the picture
};

/// Which shells are fired when. Any moment can be asked for, in any order.
///
/// Bursts follow each other at 1.1 s to 1.5 s, counted in frames so that both hold at every rate from 2 a
/// second up. The first comes within the first second; the sky before the start was no emptier.
/// Threads: any.
class ShellSchedule {
public:
    ShellSchedule(double framesPerSecond, std::uint64_t seed);

    /// The first frame that shows burst `index`; 0 is the first burst after the start.
    [[nodiscard]] std::int64_t burstFrame(std::int64_t index) const;
    /// Every shell that rises, burns or smokes at that frame.
    [[nodiscard]] std::vector<ShellPlan> plansAt(std::int64_t frame) const;

private:
    const double framesPerSecond_;
    const std::uint64_t seed_;
    std::int64_t shortestGap_; ///< frames
    std::int64_t longestGap_;  ///< frames
    std::int64_t jitter_;      ///< frames, either way
    std::int64_t offset_;      ///< frames

    [[nodiscard]] std::int64_t evenFrame(std::int64_t index) const;
    [[nodiscard]] ShellPlan plan(std::int64_t index, int companion) const;
};

} // namespace skyflare
