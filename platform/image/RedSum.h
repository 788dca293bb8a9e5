#pragma once

#include "platform/image/VideoFrame.h"

#include <cstdint>

namespace skyflare {

/// The red of all pixels of an uncompressed frame together, each limited to 0…255 by itself.
///
/// One pass over the native format, with the widest vectors that the machine has. The bits are those of
/// YcbcrConversion::redOf() on any machine. No byte beyond the last sample of a row is read.
/// @param frame  has pixels, and all planes of its format. Any thread.
std::uint64_t redSum(const VideoFrame &frame);

} // namespace skyflare
