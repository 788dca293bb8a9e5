#pragma once

#include "platform/camera/sky/LightColor.h"
#include "platform/camera/sky/SceneLayout.h"
#include "platform/camera/sky/SmokeField.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// Light that falls on the haze and smoke of the whole sky.
struct HazeLight {
    float x = 0;          ///< pixels
    float y = 0;          ///< pixels
    float radius = 1;     ///< pixels; where the light is much weaker than at its middle
    LightColor color;     ///< only the colour; how strong is said by meanRed
    float meanRed = 0;    ///< what it adds to the mean red of the whole picture, 0 to 1
    float everywhere = 0; ///< share of the middle's strength that reaches the farthest corner
};

/// Smoke that a shell has left behind.
struct SmokePuff {
    float x = 0;       ///< pixels
    float y = 0;       ///< pixels
    float radius = 1;  ///< pixels
    float density = 0; ///< 0 to about 1
};

/// The soft light in the air, on a coarse grid: flashes, smoke that they light up, halos around sparks.
///
/// For every frame: clear(), add…(), finish(), then the rows. Threads: one at a time.
class HazeGrid {
public:
    HazeGrid(const SceneLayout &layout, std::uint64_t seed);

    void clear();
    void addLight(const HazeLight &light);
    void addPuff(const SmokePuff &puff);
    /// The halo of a spark; `light` is its colour times the pixels that it covers.
    void addHalo(float x, float y, LightColor light);
    /// Spreads what was added over the smoke as it lies `seconds` after the start.
    void finish(double seconds);

    /// What the air adds to row `row` of Y, in sixty-fourths of a step. Valid until the next call.
    [[nodiscard]] const std::int16_t *lumaRow(int row);
    /// The same for row `row` of Cb and of Cr.
    [[nodiscard]] const std::int16_t *cbRow(int row);
    [[nodiscard]] const std::int16_t *crRow(int row);

private:
    struct Plane {
        std::vector<std::int16_t> nodes;
        std::vector<std::int16_t> row;
    };
    enum Channel { Red, Green, Blue, channelCount };

    const SceneLayout layout_;
    const int cell_; ///< pixels between two nodes
    const int columns_;
    const int rows_;
    const SmokeField field_;
    std::vector<float> light_[channelCount];
    std::vector<float> halo_[channelCount];
    std::vector<float> puffs_;
    std::vector<float> kernel_;
    std::vector<std::int16_t> between_;
    Plane luma_;
    Plane cb_;
    Plane cr_;

    void blurHalos();
    const std::int16_t *expand(Plane &plane, int row, int cell);
};

} // namespace skyflare
