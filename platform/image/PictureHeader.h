#pragma once

#include "platform/base/Bytes.h"

#include <cstdint>

namespace skyflare {

/// What the first bytes of an encoded picture say of it.
struct PictureHeader {
    enum class Kind { Png, Jpeg };
    Kind kind{};
    int width = 0;  ///< pixels
    int height = 0; ///< pixels
};

/// No picture has more pixels than this; one that says so is damaged or an attack.
inline constexpr std::uint64_t mostPixels = std::uint64_t{1} << 28;

/// Reads the header of a PNG (ISO/IEC 15948) or JPEG (ISO/IEC 10918-1) and looks whether its end is there.
/// Reads a few hundred bytes, more only to step over a JPEG's segments.
/// @return an error for what is neither, is cut short, or has no pixels or too many. Any thread.
Result<PictureHeader> readPictureHeader(const ByteSource &encoded);

} // namespace skyflare
