#include "platform/image/PictureHeader.h"

#include <algorithm>
#include <array>
#include <optional>

namespace skyflare {
namespace {

constexpr std::array<std::uint8_t, 8> pngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::array<std::uint8_t, 8> pngFirstChunk{0, 0, 0, 13, 'I', 'H', 'D', 'R'};
constexpr std::array<std::uint8_t, 12> pngLastChunk{0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};

Error pictureError(std::string message)
{
    return {"picture", 0, std::move(message)};
}

template <std::size_t count>
Result<std::array<std::uint8_t, count>> readArray(const ByteSource &source, std::uint64_t offset)
{
    std::array<std::uint8_t, count> bytes{};
    if (source.size() < count || offset > source.size() - count)
        return pictureError("the picture is cut short");
    if (const auto read = source.read(offset, bytes); !read)
        return read.error();
    return bytes;
}

/// A whole number, its most significant byte first.
template <std::size_t count> std::uint32_t bigEndian(std::span<const std::uint8_t, count> bytes)
{
    std::uint32_t number = 0;
    for (const std::uint8_t byte : bytes)
        number = number << 8 | byte;
    return number;
}

Result<PictureHeader> sized(PictureHeader::Kind kind, std::uint32_t width, std::uint32_t height)
{
    if (width == 0 || height == 0)
        return pictureError("the picture has no pixels");
    if (std::uint64_t{width} * height > mostPixels)
        return pictureError("the picture is too large");
    return PictureHeader{kind, static_cast<int>(width), static_cast<int>(height)};
}

Result<PictureHeader> readPng(const ByteSource &source)
{
    const auto start = readArray<33>(source, 0);
    if (!start)
        return start.error();
    const auto end = readArray<12>(source, source.size() - 12);
    if (!end)
        return end.error();
    if (!std::equal(pngFirstChunk.begin(), pngFirstChunk.end(), start->begin() + 8))
        return pictureError("the PNG does not begin with its header");
    if (*end != pngLastChunk)
        return pictureError("the PNG is cut short");
    const std::span bytes(*start);
    return sized(PictureHeader::Kind::Png, bigEndian(bytes.subspan<16, 4>()),
                 bigEndian(bytes.subspan<20, 4>()));
}

/// Start of frame: baseline, extended, progressive, and the last two with arithmetic coding.
bool isStartOfFrame(std::uint8_t marker)
{
    static constexpr std::array markers{0xC0, 0xC1, 0xC2, 0xC9, 0xCA};
    return std::find(markers.begin(), markers.end(), marker) != markers.end();
}

struct JpegStart {
    PictureHeader header;
    std::uint64_t pixelData = 0; ///< where the first scan begins
};

/// Steps from segment to segment until the first scan.
Result<JpegStart> readJpegSegments(const ByteSource &source)
{
    constexpr int mostSegments = 4096;
    constexpr std::uint8_t startOfScan = 0xDA;
    std::optional<PictureHeader> header;
    std::uint64_t offset = 2;
    for (int segment = 0; segment < mostSegments; ++segment) {
        const auto start = readArray<4>(source, offset);
        if (!start)
            return start.error();
        const std::uint8_t marker = (*start)[1];
        if ((*start)[0] != 0xFF)
            return pictureError("the JPEG's segments are damaged");
        if (marker == 0xFF) { // a fill byte
            ++offset;
            continue;
        }
        if (marker == startOfScan && header)
            return JpegStart{*header, offset};
        if (isStartOfFrame(marker)) {
            const auto frame = readArray<9>(source, offset);
            if (!frame)
                return frame.error();
            const std::span bytes(*frame);
            auto size = sized(PictureHeader::Kind::Jpeg, bigEndian(bytes.subspan<7, 2>()),
                              bigEndian(bytes.subspan<5, 2>()));
            if (!size)
                return size.error();
            header = *size;
        }
        const std::uint32_t length = bigEndian(std::span(*start).subspan<2, 2>());
        if (length < 2 || marker == startOfScan)
            return pictureError("the JPEG's segments are damaged");
        offset += 2 + length;
    }
    return pictureError("the JPEG's segments have no end");
}

/// Whether the picture ends with its end marker. Cameras may fill up their buffer with zeros behind it.
Result<> findJpegEnd(const ByteSource &source, std::uint64_t after)
{
    constexpr std::uint64_t mostPadding = 65536;
    constexpr std::uint64_t blockBytes = 256;
    std::array<std::uint8_t, blockBytes> block{};
    std::uint64_t end = source.size();
    const std::uint64_t lowest = std::max(after, end - std::min(end, mostPadding));
    while (end >= lowest + 2) {
        const std::uint64_t begin = std::max(lowest, end - std::min(end, blockBytes));
        const std::span read(block.data(), static_cast<std::size_t>(end - begin));
        if (const auto done = source.read(begin, read); !done)
            return done.error();
        const auto last = std::find_if(read.rbegin(), read.rend(), [](std::uint8_t b) { return b != 0; });
        if (last != read.rend() && std::next(last) != read.rend())
            return *last == 0xD9 && *std::next(last) == 0xFF ? Result<>{}
                                                             : pictureError("the JPEG is cut short");
        end = last == read.rend() ? begin : begin + 1; // the marker may lie across two blocks
    }
    return pictureError("the JPEG is cut short");
}

Result<PictureHeader> readJpeg(const ByteSource &source)
{
    const auto start = readJpegSegments(source);
    if (!start)
        return start.error();
    if (const auto end = findJpegEnd(source, start->pixelData); !end)
        return end.error();
    return start->header;
}

} // namespace

Result<PictureHeader> readPictureHeader(const ByteSource &encoded)
{
    const auto start = readArray<8>(encoded, 0);
    if (!start)
        return start.error();
    if (*start == pngSignature)
        return readPng(encoded);
    if ((*start)[0] == 0xFF && (*start)[1] == 0xD8)
        return readJpeg(encoded);
    return pictureError("neither PNG nor JPEG");
}

} // namespace skyflare
