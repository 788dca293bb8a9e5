#pragma once

#include "platform/image/VideoFrame.h"

#include <cstdint>
#include <optional>

namespace skyflare {

/// Mean red of the whole frame: each pixel's red, limited to 0…255, averaged exactly, rounded to 8 bits.
///
/// YCbCr formats are converted with the frame's own matrix and range (ITU-R BT.601, BT.709, BT.2020).
/// One pass over the native format; a compressed frame is decoded first.
/// @return nothing for a frame without pixels, or a compressed one that does not decode. Any thread.
std::optional<std::uint8_t> averageRed(const VideoFrame &frame);

} // namespace skyflare
