#include "platform/image/PngEncoder.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace skyflare {
namespace {

constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::array<std::uint8_t, 2> zlibHeader{0x78, 0x01}; // RFC 1950: deflate, 32 KiB, quickest
constexpr std::uint8_t averageFilter = 3;

/// How much of the picture is compressed at a time: enough that joints cost nothing, few enough that the
/// bytes stay in the processor's cache from the filter to the checksum.
constexpr std::size_t stripBytes = std::size_t{256} << 10;

void appendBigEndian(Bytes &to, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        to.push_back(static_cast<std::uint8_t>(number >> shift));
}

void appendChunk(Bytes &to, std::string_view type, std::span<const std::uint8_t> data)
{
    appendBigEndian(to, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = to.size();
    to.insert(to.end(), type.begin(), type.end());
    to.insert(to.end(), data.begin(), data.end());
    appendBigEndian(to, crc32_gzip_refl(0, to.data() + start, to.size() - start));
}

/// Each byte less the mean of the one left of it and the one above, rounded down.
void filterRow(std::span<const std::uint8_t> row, std::span<const std::uint8_t> above, std::uint8_t *into)
{
    constexpr std::size_t pixelBytes = 3;
    for (std::size_t i = 0; i < pixelBytes; ++i)
        into[i] = static_cast<std::uint8_t>(row[i] - above[i] / 2);
    const std::uint8_t *left = row.data();
    const std::uint8_t *current = row.data() + pixelBytes;
    const std::uint8_t *up = above.data() + pixelBytes;
    std::uint8_t *out = into + pixelBytes;
    for (std::size_t i = 0; i < row.size() - pixelBytes; ++i)
        out[i] = static_cast<std::uint8_t>(current[i] - ((left[i] + up[i]) >> 1));
}

/// Filters and compresses strips of a picture, each for itself, so that several of these may share a
/// picture's strips. Its buffers are used again for every strip.
///
/// Threads: one at a time. Borrows the pixels.
class StripCompressor {
public:
    explicit StripCompressor(const PixelBuffer &pixels) : pixels_(pixels), black_(pixels.rowBytes()) {}

    /// A strip as raw deflate data (RFC 1951) that ends at a byte's end, so that strips can be joined.
    struct Strip {
        std::span<const std::uint8_t> deflated; ///< until the next call
        std::uint32_t adler = 0;                ///< Adler-32 of the filtered bytes
        std::size_t filteredBytes = 0;
    };
    Strip compress(int firstRow, int endRow)
    {
        filter(firstRow, endRow);
        deflate(endRow == pixels_.height);
        return {deflated_, isal_adler32(1, filtered_.data(), filtered_.size()), filtered_.size()};
    }

private:
    const PixelBuffer &pixels_;
    const Bytes black_; ///< what lies above the first row
    Bytes filtered_;
    Bytes deflated_;
    Bytes levelBuffer_ = Bytes(ISAL_DEF_LVL1_DEFAULT);
    isal_zstream stream_{};

    void filter(int firstRow, int endRow)
    {
        filtered_.resize(static_cast<std::size_t>(endRow - firstRow) * (pixels_.rowBytes() + 1));
        std::uint8_t *into = filtered_.data();
        for (int y = firstRow; y < endRow; ++y) {
            *into++ = averageFilter;
            filterRow(pixels_.row(y), y == 0 ? std::span(black_) : pixels_.row(y - 1), into);
            into += pixels_.rowBytes();
        }
    }

    void deflate(bool last)
    {
        isal_deflate_init(&stream_);
        stream_.level = 1;
        stream_.level_buf = levelBuffer_.data();
        stream_.level_buf_size = static_cast<std::uint32_t>(levelBuffer_.size());
        stream_.flush = SYNC_FLUSH;
        stream_.end_of_stream = last ? 1 : 0;
        stream_.next_in = filtered_.data();
        stream_.avail_in = static_cast<std::uint32_t>(filtered_.size());
        deflated_.resize(filtered_.size() + filtered_.size() / 8 + 1024);
        do { // once, unless the strip grows by more than that
            if (stream_.total_out == deflated_.size())
                deflated_.resize(2 * deflated_.size());
            stream_.next_out = deflated_.data() + stream_.total_out;
            stream_.avail_out = static_cast<std::uint32_t>(deflated_.size() - stream_.total_out);
            isal_deflate(&stream_);
        } while (stream_.avail_out == 0);
        deflated_.resize(stream_.total_out);
    }
};

void appendHeader(Bytes &png, const PixelBuffer &pixels)
{
    constexpr std::array<std::uint8_t, 5> rgb8{8, 2, 0, 0, 0}; // depth, colours; the usual methods; in order
    Bytes header;
    appendBigEndian(header, static_cast<std::uint32_t>(pixels.width));
    appendBigEndian(header, static_cast<std::uint32_t>(pixels.height));
    header.insert(header.end(), rgb8.begin(), rgb8.end());
    png.insert(png.end(), signature.begin(), signature.end());
    appendChunk(png, "IHDR", header);
}

void appendPixels(Bytes &png, const PixelBuffer &pixels)
{
    const auto rowsAStrip = static_cast<int>(std::max(std::size_t{1}, stripBytes / pixels.rowBytes()));
    StripCompressor compressor(pixels);
    uLong adler = 1;
    appendChunk(png, "IDAT", zlibHeader);
    for (int first = 0; first < pixels.height; first += rowsAStrip) {
        const auto strip = compressor.compress(first, std::min(first + rowsAStrip, pixels.height));
        appendChunk(png, "IDAT", strip.deflated);
        adler = adler32_combine(adler, strip.adler, static_cast<z_off_t>(strip.filteredBytes));
    }
    Bytes trailer;
    appendBigEndian(trailer, static_cast<std::uint32_t>(adler));
    appendChunk(png, "IDAT", trailer);
}

} // namespace

Result<Bytes> encodePng(const PixelBuffer &pixels)
{
    if (pixels.width < 1 || pixels.height < 1 ||
        pixels.rgb.size() != pixels.rowBytes() * static_cast<std::size_t>(pixels.height))
        return Error{"PNG", 0, "the picture has no pixels"};
    Bytes png;
    png.reserve(pixels.rgb.size() + pixels.rgb.size() / 16 + 4096); // pages that are not written cost nothing
    appendHeader(png, pixels);
    appendPixels(png, pixels);
    appendChunk(png, "IEND", {});
    return png;
}

} // namespace skyflare
