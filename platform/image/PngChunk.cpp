#include "platform/image/PngChunk.h"

#include <isa-l/crc.h>

#include <algorithm>

namespace skyflare {

std::size_t endPngChunk(std::uint8_t *chunk, std::string_view type, std::uint8_t *dataEnd)
{
    const auto dataBytes = static_cast<std::size_t>(dataEnd - pngChunkData(chunk));
    std::uint8_t *typeStart = putBigEndian(chunk, static_cast<std::uint32_t>(dataBytes));
    std::copy(type.begin(), type.end(), typeStart);
    putBigEndian(dataEnd, crc32_gzip_refl(0, typeStart, type.size() + dataBytes));
    return dataBytes + pngChunkFrame;
}

} // namespace skyflare
