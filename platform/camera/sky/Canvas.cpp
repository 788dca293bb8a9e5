#include "platform/camera/sky/Canvas.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

/// How much of the pixel that begins at `start` lies between `from` and `to`.
float coverage(int start, float from, float to)
{
    const auto begin = static_cast<float>(start);
    return std::clamp(std::min(to, begin + 1) - std::max(from, begin), 0.0F, 1.0F);
}

int clampedFloor(float value, int limit)
{
    return static_cast<int>(std::floor(std::clamp(value, 0.0F, static_cast<float>(limit))));
}

int clampedCeil(float value, int limit)
{
    return static_cast<int>(std::ceil(std::clamp(value, 0.0F, static_cast<float>(limit))));
}

} // namespace

Canvas::Canvas(int width, int height)
    : width_(width),
      height_(height),
      colors_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
      openness_(colors_.size(), 1.0F)
{
}

void Canvas::fillRectangle(float left, float top, float right, float bottom, LightColor color, float openness)
{
    for (int y = clampedFloor(top, height_); y < clampedCeil(bottom, height_); ++y) {
        const float rowShare = coverage(y, top, bottom);
        for (int x = clampedFloor(left, width_); x < clampedCeil(right, width_); ++x) {
            const float share = rowShare * coverage(x, left, right);
            LightColor &pixel = colors_[index(x, y)];
            pixel = mixed(pixel, color, share);
            float &open = openness_[index(x, y)];
            open += (openness - open) * share;
        }
    }
}

void Canvas::addGlow(float x, float y, float radius, LightColor color)
{
    // A glow smaller than a pixel keeps its light: wider and fainter.
    const float shown = std::max(radius, 1.0F);
    const float strength = (radius / shown) * (radius / shown);
    for (int row = clampedFloor(y - shown, height_); row < clampedCeil(y + shown, height_); ++row) {
        for (int column = clampedFloor(x - shown, width_); column < clampedCeil(x + shown, width_);
             ++column) {
            const float dx = (static_cast<float>(column) + 0.5F - x) / shown;
            const float dy = (static_cast<float>(row) + 0.5F - y) / shown;
            const float inside = std::max(0.0F, 1.0F - dx * dx - dy * dy);
            LightColor &pixel = colors_[index(column, row)];
            pixel = pixel + color * (strength * inside * inside);
        }
    }
}

} // namespace skyflare
