#pragma once

#include "platform/image/PixelBuffer.h"
#include "platform/image/VideoFrame.h"

namespace skyflare {

/// Any VideoFrame as RGB, at its own size: the formulas of averageRed() for all three channels.
/// @return an error for a frame without an image buffer and for damaged compressed ones. Any thread.
Result<PixelBuffer> convertToRgb(const VideoFrame &frame);

} // namespace skyflare
