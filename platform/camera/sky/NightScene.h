#pragma once

#include "platform/camera/sky/SceneLayout.h"

#include <cstdint>
#include <vector>

namespace skyflare {

class Canvas;

/// What stands still: the night sky with its stars and the glow of the city, the far shore, the ground of
/// the water. Kept as rows of a limited-range picture, 64 steps to each of its own.
///
/// Threads: any.
class NightScene {
public:
    NightScene(const SceneLayout &layout, std::uint64_t seed);

    /// Y, from 16 · 64.
    [[nodiscard]] const std::int16_t *lumaRow(int row) const;
    /// Cb and Cr, around 128 · 64.
    [[nodiscard]] const std::int16_t *cbRow(int row) const;
    [[nodiscard]] const std::int16_t *crRow(int row) const;

    /// How much of the light in the air is seen at each pixel of a row, 32767 for all; nothing where the
    /// whole row is open sky.
    [[nodiscard]] const std::int16_t *openness(int row) const;
    [[nodiscard]] const std::int16_t *chromaOpenness(int row) const;
    /// The first row that something of the shore stands in, for each column: sparks are seen above it.
    [[nodiscard]] const std::vector<int> &skyline() const { return skyline_; }

private:
    const SceneLayout layout_;
    const std::size_t width_;
    const std::size_t chromaWidth_;
    std::vector<std::int16_t> luma_;
    std::vector<std::int16_t> cb_;
    std::vector<std::int16_t> cr_;
    int firstCovered_ = 0; ///< even
    std::vector<std::int16_t> openness_;
    std::vector<std::int16_t> chromaOpenness_;
    std::vector<int> skyline_;

    void paintSky(Canvas &canvas, std::uint64_t seed) const;
    void paintStars(Canvas &canvas, std::uint64_t seed) const;
    void keepColors(const Canvas &canvas);
    void keepSkyline(const Canvas &canvas);
};

} // namespace skyflare
