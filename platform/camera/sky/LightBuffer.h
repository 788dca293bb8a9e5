#pragma once

#include "platform/camera/sky/I420View.h"
#include "platform/camera/sky/LightColor.h"
#include "platform/camera/sky/SceneLayout.h"

#include <array>
#include <cstdint>
#include <vector>

namespace skyflare {

/// Where sparks leave their light, far beyond what a screen shows; developed onto the picture as film does:
/// bright cores go white, nothing clips hard.
///
/// Only tiles that light has fallen on are developed and wiped. Positions in pixels.
/// Threads: one at a time.
class LightBuffer {
public:
    /// Nothing is drawn from a column's `skyline` row down.
    LightBuffer(const SceneLayout &layout, std::vector<int> skyline);

    /// A streak between two points, as wide as sparks are; its light runs from `first` to `last`.
    void addStreak(float x0, float y0, float x1, float y1, LightColor first, LightColor last);
    /// A round spot that fades to nothing at `radius`.
    void addSpot(float x, float y, float radius, LightColor color);

    /// Lays all light over `picture` and forgets it.
    void developOnto(const I420View &picture);

private:
    using Pixel = std::array<std::uint16_t, 4>; ///< red, green, blue, nothing
    /// A line that is walked along its longer side, pixel by pixel.
    struct Streak {
        bool isFlat = false;    ///< wider than high
        int begin = 0, end = 0; ///< pixels along
        float across = 0;       ///< where its middle is at `begin`
        float slope = 0;        ///< across, for each pixel along
        float half = 0;         ///< of its width
        LightColor light;       ///< at `begin`
        LightColor change;      ///< for each pixel along
    };
    struct Developed {
        int red = 0, green = 0, blue = 0; ///< 0 to 255
    };

    const int width_;
    const int height_; ///< the rows above the water
    const float halfStreak_;
    const float streakStrength_;
    const std::vector<int> skyline_;
    const int openRows_; ///< from the top: rows that the shore nowhere reaches
    const int columns_;  ///< of tiles
    std::vector<Pixel> pixels_;
    std::vector<std::uint8_t> lit_;
    std::array<std::uint8_t, 4096> curve_{};

    /// Whether all of a rectangle can be drawn on, its last column and row included.
    [[nodiscard]] bool isOpen(int left, int top, int right, int bottom) const;
    void add(int x, int y, LightColor light);
    template <bool open> void put(int x, int y, LightColor light);
    template <bool open> void drawStreak(Streak streak);
    template <bool open> void drawSpot(float x, float y, float radius, LightColor light);
    [[nodiscard]] Pixel &pixel(int x, int y);
    [[nodiscard]] Developed developed(const Pixel &light) const;
    void developTile(const I420View &picture, int column, int row);
    void developQuad(const I420View &picture, int x, int y);
};

} // namespace skyflare
