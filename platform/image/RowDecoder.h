#pragma once

#include "platform/base/Result.h"
#include "platform/image/PixelBuffer.h"

#include <cstdint>
#include <span>

namespace skyflare {

/// A compressed picture that is decoded a row at a time, from the top.
///
/// Threads: one. Views the compressed bytes, which must outlive it.
class RowDecoder {
public:
    RowDecoder() = default;
    RowDecoder(const RowDecoder &) = delete;
    RowDecoder &operator=(const RowDecoder &) = delete;
    virtual ~RowDecoder() = default;

    [[nodiscard]] virtual int width() const = 0;  ///< pixels
    [[nodiscard]] virtual int height() const = 0; ///< pixels

    /// Fills `rgb`, width × 3 bytes, with the next row; `height` calls in all. Damage is an error, at the
    /// latest when the last row is read; nothing more can be read after it.
    virtual Result<> readRow(std::span<std::uint8_t> rgb) = 0;
};

/// The whole picture.
Result<PixelBuffer> decodeAllRows(RowDecoder &decoder);

} // namespace skyflare
