#pragma once

#include "platform/camera/sky/LightColor.h"

#include <vector>

namespace skyflare {

/// A picture in floating point that the still scene is painted on, once; edges are smooth at any size.
///
/// Positions are in pixels, the top left corner of the picture at (0, 0). Threads: one at a time.
class Canvas {
public:
    Canvas(int width, int height);

    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    [[nodiscard]] LightColor &color(int x, int y) { return colors_[index(x, y)]; }
    [[nodiscard]] const LightColor &color(int x, int y) const { return colors_[index(x, y)]; }
    /// How much of the light in the air behind can be seen at a pixel: 1 is open sky.
    [[nodiscard]] float openness(int x, int y) const { return openness_[index(x, y)]; }

    /// Covers a rectangle; pixels at its edges by the share of them that lies in it.
    void fillRectangle(float left, float top, float right, float bottom, LightColor color, float openness);
    /// Adds light that fades to nothing at `radius`.
    void addGlow(float x, float y, float radius, LightColor color);

private:
    int width_;
    int height_;
    std::vector<LightColor> colors_;
    std::vector<float> openness_;

    [[nodiscard]] std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x);
    }
};

} // namespace skyflare
