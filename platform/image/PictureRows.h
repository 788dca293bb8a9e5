#pragma once

#include "platform/image/PixelBuffer.h"

#include <cstdint>
#include <span>

namespace skyflare {

/// A picture as rows of 8-bit R, G, B, each made when it is asked for, in any order.
///
/// Threads: any, several at once.
class PictureRows {
public:
    PictureRows() = default;
    PictureRows(const PictureRows &) = default;
    PictureRows &operator=(const PictureRows &) = default;
    virtual ~PictureRows() = default;

    [[nodiscard]] virtual int width() const = 0;  ///< pixels, at least 1
    [[nodiscard]] virtual int height() const = 0; ///< pixels, at least 1

    /// @param room  width × 3 bytes, which row `y` is written to unless it is in memory already.
    /// @return the row, wherever it is; valid as long as `room` and the picture are.
    [[nodiscard]] virtual const std::uint8_t *row(int y, std::span<std::uint8_t> room) const noexcept = 0;

    [[nodiscard]] std::size_t rowBytes() const { return static_cast<std::size_t>(width()) * 3; }
};

/// The rows of a picture in memory, which must outlive it.
class PixelRows final : public PictureRows {
public:
    explicit PixelRows(const PixelBuffer &pixels) : pixels_(&pixels) {}

    [[nodiscard]] int width() const override { return pixels_->width; }
    [[nodiscard]] int height() const override { return pixels_->height; }
    [[nodiscard]] const std::uint8_t *row(int y, std::span<std::uint8_t> /*room*/) const noexcept override
    {
        return pixels_->row(y).data();
    }

private:
    const PixelBuffer *pixels_;
};

} // namespace skyflare
