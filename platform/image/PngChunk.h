#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace skyflare {

/// What a PNG chunk has beside its data: length and type before it, a checksum behind it.
inline constexpr std::size_t pngChunkFrame = 12; ///< bytes

inline std::uint8_t *putBigEndian(std::uint8_t *into, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        *into++ = static_cast<std::uint8_t>(number >> shift);
    return into;
}

/// Where the data of a chunk that begins at `chunk` is to be written.
inline std::uint8_t *pngChunkData(std::uint8_t *chunk)
{
    return chunk + 8;
}

/// Puts the rest around data that was written and ends at `dataEnd`.
/// @return how long the whole chunk is.
std::size_t endPngChunk(std::uint8_t *chunk, std::string_view type, std::uint8_t *dataEnd);

} // namespace skyflare
