#pragma once

#include "platform/camera/sky/SceneLayout.h"
#include "platform/camera/sky/ShellSchedule.h"

#include <vector>

namespace skyflare {

class HazeGrid;
class LightBuffer;
class SkyRandom;

/// One shell: the trail that it draws on its way up, the flash, its stars until they are out, its smoke.
///
/// Threads: any; it does not change once made.
class Shell {
public:
    Shell(const ShellPlan &plan, const SceneLayout &layout);

    [[nodiscard]] std::uint64_t id() const { return plan_.id; }
    /// Draws it as it is `seconds` after the start.
    void draw(double seconds, LightBuffer &light, HazeGrid &haze) const;

private:
    struct Star {
        float reachX = 0, reachY = 0; ///< pixels that it flies, without gravity
        float life = 0;               ///< seconds
        float strength = 0;
        bool inPistil = false;
        std::uint64_t id = 0;
    };
    struct Flight;

    const ShellPlan plan_;
    const SceneLayout layout_;
    const float centerX_; ///< pixels
    const float centerY_; ///< pixels
    std::vector<Star> stars_;

    void makeStars();
    void placeStar(Star &star, int number, SkyRandom &random, const float (&axes)[2][3]) const;
    [[nodiscard]] Flight flightAt(float age) const;
    [[nodiscard]] LightColor starColor(const Star &star, float age) const;
    void drawFlash(float sinceBreak, LightBuffer &light, HazeGrid &haze) const;
    void drawSmoke(float sinceBreak, HazeGrid &haze) const;
    void drawStar(const Star &star, const Flight &flight, LightBuffer &light, HazeGrid &haze) const;
    void drawGlitter(const Star &star, const Flight &flight, LightColor color, LightBuffer &light) const;
    void drawCrackle(const Star &star, const Flight &flight, LightBuffer &light, HazeGrid &haze) const;
};

} // namespace skyflare
