#include "platform/image/PngUnfilter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

namespace skyflare {
namespace {

constexpr std::size_t pixelBytes = 3;
using Pixel = std::array<int, pixelBytes>;

/// From left to right. What a pixel's three bytes depend on is kept in registers, so that the three go on
/// side by side.
/// @param predict  a byte from the one left of it, the one above, and the one above that on the left.
template <typename Predict> void undo(std::span<const std::uint8_t> filtered,
                                      std::span<const std::uint8_t> above, std::span<std::uint8_t> rgb,
                                      Predict predict)
{
    const std::uint8_t *from = filtered.data() + 1;
    const std::uint8_t *up = above.data();
    std::uint8_t *to = rgb.data();
    Pixel left{};
    Pixel aboveLeft{};
    for (std::size_t i = 0; i < rgb.size(); i += pixelBytes) {
        for (std::size_t channel = 0; channel < pixelBytes; ++channel) {
            const int upper = up[i + channel];
            const int value = (from[i + channel] + predict(left[channel], upper, aboveLeft[channel])) & 0xFF;
            to[i + channel] = static_cast<std::uint8_t>(value);
            left[channel] = value;
            aboveLeft[channel] = upper;
        }
    }
}

int nearest(int left, int above, int aboveLeft)
{
    const int byLeft = std::abs(above - aboveLeft);
    const int byAbove = std::abs(left - aboveLeft);
    const int byBoth = std::abs(left + above - 2 * aboveLeft);
    if (byLeft <= byAbove && byLeft <= byBoth)
        return left;
    return byAbove <= byBoth ? above : aboveLeft;
}

} // namespace

bool unfilterRow(std::span<const std::uint8_t> filtered, std::span<const std::uint8_t> above,
                 std::span<std::uint8_t> rgb)
{
    enum Filter : std::uint8_t { None, Sub, Up, Average, Paeth };
    switch (filtered.front()) {
    case None:
        std::ranges::copy(filtered.subspan(1), rgb.begin());
        return true;
    case Sub:
        undo(filtered, above, rgb, [](int left, int, int) { return left; });
        return true;
    case Up:
        for (std::size_t i = 0; i < rgb.size(); ++i)
            rgb[i] = static_cast<std::uint8_t>(filtered[i + 1] + above[i]);
        return true;
    case Average:
        undo(filtered, above, rgb, [](int left, int up, int) { return (left + up) / 2; });
        return true;
    case Paeth:
        undo(filtered, above, rgb, nearest);
        return true;
    default:
        return false;
    }
}

} // namespace skyflare
