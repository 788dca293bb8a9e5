#include "platform/camera/sky/LightBuffer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace skyflare {

namespace {

constexpr int tileWidth = 16;
constexpr int tileHeight = 8;
constexpr float lightUnit = 4096; ///< what 1.0 of a LightColor is kept as

/// std::floor is a call into the C library on processors that need not have an instruction for it.
int floorOf(float value)
{
    const int whole = static_cast<int>(value);
    return whole - (value < static_cast<float>(whole) ? 1 : 0);
}

std::uint16_t saturated(int sum)
{
    return static_cast<std::uint16_t>(std::min(sum, 65535));
}

} // namespace

LightBuffer::LightBuffer(const SceneLayout &layout, std::vector<int> skyline)
    : width_(layout.width),
      height_(layout.shore),
      halfStreak_(std::max(1.0F, 1.5F * layout.unit / 1080.0F)),
      streakStrength_(std::min(1.0F, 1.5F * layout.unit / 1080.0F)),
      skyline_(std::move(skyline)),
      openRows_(*std::min_element(skyline_.begin(), skyline_.end())),
      columns_((layout.width + tileWidth - 1) / tileWidth)
{
    const int rows = (height_ + tileHeight - 1) / tileHeight;
    lit_.resize(static_cast<std::size_t>(columns_ * rows));
    pixels_.resize(lit_.size() * tileWidth * tileHeight);
    for (std::size_t i = 0; i < curve_.size(); ++i) {
        const double light = (static_cast<double>(i) + 0.5) * 16 / static_cast<double>(lightUnit);
        curve_[i] = static_cast<std::uint8_t>(255.0 * std::pow(1.0 - std::exp(-1.15 * light), 0.78));
    }
    curve_[0] = 0;
}

LightBuffer::Pixel &LightBuffer::pixel(int x, int y)
{
    return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns_ * tileWidth) +
                   static_cast<std::size_t>(x)];
}

bool LightBuffer::isOpen(int left, int top, int right, int bottom) const
{
    return left >= 0 && top >= 0 && right < width_ && bottom < openRows_;
}

inline void LightBuffer::add(int x, int y, LightColor light)
{
    Pixel &into = pixel(x, y);
    into[0] = saturated(into[0] + static_cast<int>(light.red));
    into[1] = saturated(into[1] + static_cast<int>(light.green));
    into[2] = saturated(into[2] + static_cast<int>(light.blue));
    lit_[static_cast<std::size_t>((y / tileHeight) * columns_ + x / tileWidth)] = 1;
}

template <bool open> void LightBuffer::put(int x, int y, LightColor light)
{
    if (open || (x >= 0 && y >= 0 && x < width_ && y < skyline_[static_cast<std::size_t>(x)]))
        add(x, y, light);
}

void LightBuffer::addStreak(float x0, float y0, float x1, float y1, LightColor first, LightColor last)
{
    Streak streak;
    streak.isFlat = std::abs(x1 - x0) >= std::abs(y1 - y0);
    if (!streak.isFlat) { // it is walked along its longer side, which is "x" from here on
        std::swap(x0, y0);
        std::swap(x1, y1);
    }
    if (x0 > x1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
        std::swap(first, last);
    }
    const int limit = streak.isFlat ? width_ : height_;
    streak.begin = std::max(0, -floorOf(0.5F - x0));
    streak.end = std::min(limit, -floorOf(0.5F - x1));
    if (streak.begin >= streak.end)
        return;
    const float length = x1 - x0;
    streak.slope = (y1 - y0) / length;
    streak.half = halfStreak_ * std::sqrt(1.0F + streak.slope * streak.slope);
    const float toBegin = static_cast<float>(streak.begin) + 0.5F - x0;
    streak.across = y0 + streak.slope * toBegin - 0.5F;
    streak.change = (last + first * -1.0F) * (lightUnit * streakStrength_ / length);
    streak.light = first * (lightUnit * streakStrength_) + streak.change * toBegin;
    const int low = floorOf(std::min(y0, y1) - streak.half) - 1;
    const int high = floorOf(std::max(y0, y1) + streak.half) + 1;
    const bool open = streak.isFlat ? isOpen(streak.begin, low, streak.end, high)
                                    : isOpen(low, streak.begin, high, streak.end);
    if (open)
        drawStreak<true>(streak);
    else
        drawStreak<false>(streak);
}

template <bool open> void LightBuffer::drawStreak(Streak streak)
{
    const float inverse = 1.0F / streak.half;
    for (int along = streak.begin; along < streak.end; ++along) {
        const int to = floorOf(streak.across + streak.half);
        for (int side = -floorOf(streak.half - streak.across); side <= to; ++side) {
            const float distance = (static_cast<float>(side) - streak.across) * inverse;
            const float falloff = 1.0F - distance * distance;
            put<open>(streak.isFlat ? along : side, streak.isFlat ? side : along,
                      streak.light * (falloff * falloff));
        }
        streak.across += streak.slope;
        streak.light = streak.light + streak.change;
    }
}

void LightBuffer::addSpot(float x, float y, float radius, LightColor color)
{
    if (x + radius < 0 || y + radius < 0 || x - radius > static_cast<float>(width_) ||
        y - radius > static_cast<float>(height_))
        return;
    // A spot smaller than a pixel keeps its light: wider and fainter.
    const float shown = std::max(radius, 1.2F);
    const LightColor light = color * (lightUnit * (radius / shown) * (radius / shown));
    if (isOpen(floorOf(x - shown), floorOf(y - shown), floorOf(x + shown), floorOf(y + shown)))
        drawSpot<true>(x, y, shown, light);
    else
        drawSpot<false>(x, y, shown, light);
}

template <bool open> void LightBuffer::drawSpot(float x, float y, float radius, LightColor light)
{
    const float inverse = 1.0F / radius;
    const int bottom = floorOf(y + radius);
    const int right = floorOf(x + radius);
    for (int row = floorOf(y - radius); row <= bottom; ++row) {
        const float dy = (static_cast<float>(row) + 0.5F - y) * inverse;
        for (int column = floorOf(x - radius); column <= right; ++column) {
            const float dx = (static_cast<float>(column) + 0.5F - x) * inverse;
            const float falloff = 1.0F - dx * dx - dy * dy;
            if (falloff > 0)
                put<open>(column, row, light * (falloff * falloff * falloff));
        }
    }
}

LightBuffer::Developed LightBuffer::developed(const Pixel &light) const
{
    return {curve_[light[0] >> 4U], curve_[light[1] >> 4U], curve_[light[2] >> 4U]};
}

void LightBuffer::developQuad(const I420View &picture, int x, int y)
{
    Developed sum;
    int strongest = 0;
    for (int i = 0; i < 4; ++i) {
        const int column = x + (i & 1);
        const int row = y + (i >> 1);
        const Developed light = developed(pixel(column, row));
        sum = {sum.red + light.red, sum.green + light.green, sum.blue + light.blue};
        const int peak = std::max({light.red, light.green, light.blue});
        strongest += peak;
        if (peak == 0 || column >= picture.width)
            continue;
        // Bright light hides what is behind it, grain included.
        std::uint8_t &out = picture.luma[row * picture.lumaStride + column];
        const int luma = (46 * light.red + 157 * light.green + 16 * light.blue) >> 8; // BT.709, 219 steps
        out = static_cast<std::uint8_t>(std::min(235, out - (((out - 16) * peak) >> 8) + luma));
    }
    // Means of four, 112 steps each way.
    const int cb = (-26 * sum.red - 86 * sum.green + 112 * sum.blue) >> 10;
    const int cr = (112 * sum.red - 102 * sum.green - 10 * sum.blue) >> 10;
    const std::ptrdiff_t place = (y / 2) * picture.chromaStride + x / 2;
    const auto lay = [strongest](std::uint8_t &out, int color) {
        out = static_cast<std::uint8_t>(std::clamp(out - (((out - 128) * strongest) >> 10) + color, 16, 240));
    };
    lay(picture.cb[place], cb);
    lay(picture.cr[place], cr);
}

void LightBuffer::developTile(const I420View &picture, int column, int row)
{
    const int left = column * tileWidth;
    const int top = row * tileHeight;
    const int right = std::min(left + tileWidth, width_);
    const int bottom = std::min(top + tileHeight, height_);
    for (int y = top; y < bottom; y += 2) {
        for (int x = left; x < right; x += 2) {
            std::uint64_t light[4];
            std::memcpy(light, &pixel(x, y), sizeof light / 2);
            std::memcpy(light + 2, &pixel(x, y + 1), sizeof light / 2);
            if ((light[0] | light[1] | light[2] | light[3]) != 0)
                developQuad(picture, x, y);
        }
    }
    for (int y = top; y < top + tileHeight; ++y)
        std::memset(static_cast<void *>(&pixel(left, y)), 0, tileWidth * sizeof(Pixel));
}

void LightBuffer::developOnto(const I420View &picture)
{
    for (std::size_t tile = 0; tile < lit_.size(); ++tile) {
        if (lit_[tile] == 0)
            continue;
        lit_[tile] = 0;
        const int index = static_cast<int>(tile);
        developTile(picture, index % columns_, index / columns_);
    }
}

} // namespace skyflare
