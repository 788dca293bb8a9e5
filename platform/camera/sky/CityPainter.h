#pragma once

#include "platform/camera/sky/Canvas.h"
#include "platform/camera/sky/SceneLayout.h"
#include "platform/camera/sky/SkyRandom.h"

namespace skyflare {

/// Paints the far shore: a hazy row of houses, a dark one before it, their windows, and the lamps.
///
/// Threads: one at a time. Borrows the canvas.
class CityPainter {
public:
    CityPainter(Canvas &canvas, const SceneLayout &layout, std::uint64_t seed);

    void paint();

private:
    struct Row;
    struct House {
        float left = 0, right = 0, top = 0; ///< pixels
    };

    Canvas &canvas_;
    const SceneLayout layout_;
    SkyRandom random_;

    void paintRow(const Row &row);
    void paintRoof(const House &house, const Row &row);
    void paintWindows(const House &house, const Row &row);
    void paintTower();
    void paintLamps();
};

} // namespace skyflare
