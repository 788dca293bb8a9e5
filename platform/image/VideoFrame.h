#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace skyflare {

/// How a frame's bytes stand for its picture. Names as in GStreamer's video/x-raw.
enum class PixelFormat { Unknown, NV12, I420, YUY2, UYVY, RGBx, BGRx, RGB, GRAY8, Jpeg };

enum class ColorMatrix { Bt601, Bt709, Bt2020 }; ///< YCbCr to RGB, by ITU-R BT.601, BT.709, BT.2020
enum class ColorRange { Limited, Full };         ///< Y 16 to 235 and chroma 16 to 240, or 0 to 255

/// One picture of the live video in its native format: a view of bytes that `owner` keeps alive.
///
/// Planes: NV12 has two (Y; CbCr interleaved, half size each way), I420 three (Y; Cb; Cr, half size each
/// way, rounded up), all others one. YUY2 and UYVY have whole pairs of pixels, also in the last column. RGB
/// formats are full range whatever `range` says, GRAY8 is luma without chroma. Jpeg is one compressed picture
/// of `planes[0].stride` bytes, whose colours are its own.
/// Copying a VideoFrame copies no pixels. Threads: any.
struct VideoFrame {
    struct Plane {
        const std::uint8_t *data = nullptr;
        std::ptrdiff_t stride = 0; ///< bytes from one row to the next; at least a row's bytes
    };

    PixelFormat format = PixelFormat::Unknown;
    int width = 0;  ///< pixels
    int height = 0; ///< pixels
    std::array<Plane, 3> planes{};
    ColorMatrix matrix = ColorMatrix::Bt709;
    ColorRange range = ColorRange::Limited;
    std::chrono::nanoseconds streamTime{}; ///< since the first frame of the film, or the camera's start
    std::shared_ptr<const void> owner{};

    /// Whether there is a picture: a known format and at least one pixel.
    [[nodiscard]] bool hasImageBuffer() const
    {
        return format != PixelFormat::Unknown && width > 0 && height > 0 && planes[0].data != nullptr;
    }
};

} // namespace skyflare
