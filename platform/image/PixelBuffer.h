#pragma once

#include "platform/base/Bytes.h"

#include <cstddef>
#include <span>

namespace skyflare {

/// Rows of 8-bit R, G, B without padding.
struct PixelBuffer {
    int width = 0;
    int height = 0;
    Bytes rgb; ///< width × height × 3 bytes

    /// A black picture.
    static PixelBuffer ofSize(int width, int height)
    {
        return {width, height, Bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3)};
    }

    [[nodiscard]] std::size_t rowBytes() const { return static_cast<std::size_t>(width) * 3; }
    [[nodiscard]] std::span<std::uint8_t> row(int y)
    {
        return std::span(rgb).subspan(rowBytes() * static_cast<std::size_t>(y), rowBytes());
    }
    [[nodiscard]] std::span<const std::uint8_t> row(int y) const
    {
        return std::span(rgb).subspan(rowBytes() * static_cast<std::size_t>(y), rowBytes());
    }
};

} // namespace skyflare
