#pragma once

#include "platform/image/PixelBuffer.h"

namespace skyflare {

/// Encodes losslessly as PNG (ISO/IEC 15948), 8-bit RGB. Quick rather than small.
/// @return an error for a picture without pixels. Any thread.
Result<Bytes> encodePng(const PixelBuffer &pixels);

} // namespace skyflare
