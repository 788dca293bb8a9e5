#include "platform/image/RowDecoder.h"

namespace skyflare {

Result<PixelBuffer> decodeAllRows(RowDecoder &decoder)
{
    PixelBuffer pixels = PixelBuffer::ofSize(decoder.width(), decoder.height());
    for (int y = 0; y < pixels.height; ++y) {
        if (const auto read = decoder.readRow(pixels.row(y)); !read)
            return read.error();
    }
    return pixels;
}

} // namespace skyflare
