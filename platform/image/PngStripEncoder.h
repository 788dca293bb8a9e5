#pragma once

#include "platform/image/LiteralCode.h"
#include "platform/image/PictureRows.h"

#include <memory>
#include <span>

namespace skyflare {

/// Turns a few rows of a picture at a time into a chunk of PNG data, each strip for itself, so that several
/// of these can share the strips of a picture. What comes out follows from the rows alone.
///
/// Noise is coded byte by byte after the average filter (LiteralCode); what repeats is left to ISA-L and
/// zlib, after whichever filter suits it. Threads: one at a time. Its buffers are used again for every strip
/// and picture.
class PngStripEncoder {
public:
    PngStripEncoder();
    ~PngStripEncoder();
    PngStripEncoder(PngStripEncoder &&) noexcept;
    PngStripEncoder &operator=(PngStripEncoder &&) noexcept;

    struct Strip {
        std::size_t chunkBytes = 0;
        std::uint32_t adler = 0; ///< Adler-32 of the filtered bytes (RFC 1950)
        std::size_t filteredBytes = 0;
    };

    /// Gets all the memory that strips of so many rows take. encode() needs no more and cannot fail.
    void prepare(std::size_t rowBytes, int rows);
    /// The most bytes that the chunk of such a strip has.
    static std::size_t roomFor(std::size_t rowBytes, int rows);

    struct Rows {
        const PictureRows &picture;
        int first;
        int end; ///< behind the last
    };
    /// @param chunk  where an IDAT chunk with these rows is written: deflate data (RFC 1951) in whole bytes,
    ///               without a last block.
    Strip encode(const Rows &rows, std::uint8_t *chunk) noexcept;

private:
    class Deflater;
    struct Deflated {
        std::span<const std::uint8_t> filtered; ///< what was deflated
        std::uint8_t *end = nullptr;            ///< of the result; none if there is none
    };

    Bytes average_; ///< the rows after the filter of that name
    Bytes up_;
    Bytes trial_;
    Bytes rowRoom_; ///< of two rows
    std::unique_ptr<Deflater> deflater_;

    std::span<std::uint8_t> filter(const Rows &rows, std::uint8_t kind, Bytes &into);
    Deflated deflateBest(std::span<std::uint8_t> average, std::span<std::uint8_t> up, std::size_t toBeat,
                         std::uint8_t *into);
};

} // namespace skyflare
