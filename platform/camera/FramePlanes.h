#pragma once

#include "platform/image/VideoFrame.h"

#include <array>
#include <cstdint>

namespace skyflare {

/// The rows of one plane: how many bytes of each belong to the picture.
struct PlaneShape {
    std::ptrdiff_t rowBytes = 0;
    int rows = 0;
};

/// One for each plane of a raw format; no rows for a plane that it does not have. Any thread.
std::array<PlaneShape, 3> planeShapes(PixelFormat format, int width, int height);

/// A part of a picture, in pixels.
struct PictureRegion {
    std::int64_t x = 0;
    std::int64_t y = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
};

/// The part of a raw frame that lies in `region`; shares its bytes. A region that begins in the middle of a
/// chroma sample loses that column or row: no pixel from outside counts.
/// @return a frame without an image buffer where nothing is left. Any thread.
VideoFrame cropped(VideoFrame frame, PictureRegion region);

/// The same picture in memory of its own, rows without padding, or the same compressed bytes. Any thread.
VideoFrame copied(const VideoFrame &frame);

} // namespace skyflare
