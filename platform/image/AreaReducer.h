#pragma once

#include "platform/image/PixelBuffer.h"

#include <vector>

namespace skyflare {

/// Averages a picture down by area as its rows come: each pixel of the result is the exact mean of the
/// area that it covers, pixels on its edge weighed by the part inside.
///
/// Threads: one.
class AreaReducer {
public:
    /// The size of the picture and of the result, which is at least 1 and at most the picture's own.
    AreaReducer(int width, int height, int reducedWidth, int reducedHeight);

    /// The next row of the picture, width × 3 bytes.
    void addRow(std::span<const std::uint8_t> rgb);

    /// The result, once all rows are there.
    [[nodiscard]] PixelBuffer take() { return std::move(result_); }

private:
    const std::uint64_t width_;
    const std::uint64_t height_;
    PixelBuffer result_;
    int nextRow_ = 0;                  ///< of the result
    std::uint64_t rowFilled_ = 0;      ///< how much of it is there, of height_ parts
    std::vector<std::uint16_t> whole_; ///< rows of the picture that lie whole in that row, summed
    int wholeRows_ = 0;                ///< that are in it
    std::vector<std::uint32_t> sum_;   ///< the other rows, each by how much of it counts: up to 255 × height

    void addWhole(std::span<const std::uint8_t> rgb);
    void weighWhole();
    void addWeighted(std::span<const std::uint8_t> rgb, std::uint32_t weight);
    void finishRow();
};

/// The whole picture averaged down to `width` × `height` by area; both at least 1, at most its own size.
PixelBuffer reduced(const PixelBuffer &pixels, int width, int height);

} // namespace skyflare
