#pragma once

#include "platform/image/VideoFrame.h"
#include "platform/image/YcbcrConversion.h"

#include <cstdint>
#include <span>

namespace skyflare {

/// Row `y` of a frame in NV12, I420, YUY2 or UYVY as R, G, B.
///
/// With the widest vectors that the machine has; the bits are those of YcbcrConversion on any machine. No
/// byte beyond the last sample of a row is read.
/// @param frame  has all planes of its format.
/// @param rgb  width × 3 bytes. Any thread.
void convertYcbcrRow(const VideoFrame &frame, const YcbcrConversion &conversion, int y,
                     std::span<std::uint8_t> rgb);

} // namespace skyflare
