#pragma once

#include "platform/base/Result.h"
#include "platform/image/PixelBuffer.h"

namespace skyflare {

/// A picture as JPEG (ISO/IEC 10918-1), chroma halved each way: for what is made small, never for a photo.
/// @param quality  1 to 100, as the library counts. @return an error for a picture without pixels or larger
/// than JPEG can be. Any thread.
Result<Bytes> encodeJpeg(const PixelBuffer &pixels, int quality);

} // namespace skyflare
