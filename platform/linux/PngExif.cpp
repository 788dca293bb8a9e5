#include "platform/linux/PngExif.h"

#include <exiv2/exif.hpp>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace skyflare {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t signatureBytes = 8;
constexpr std::size_t chunkOverhead = 12; // length, type, checksum

std::uint32_t readBigEndian(std::span<const std::uint8_t> bytes)
{
    return static_cast<std::uint32_t>(bytes[0] << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3]);
}

void appendBigEndian(Bytes &to, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        to.push_back(static_cast<std::uint8_t>(number >> shift));
}

void appendChunk(Bytes &to, std::string_view type, const Bytes &data)
{
    appendBigEndian(to, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = to.size();
    to.insert(to.end(), type.begin(), type.end());
    to.insert(to.end(), data.begin(), data.end());
    appendBigEndian(to, static_cast<std::uint32_t>(crc32_z(0, to.data() + start, to.size() - start)));
}

/// The picture's chunks, whole; nothing if they do not fill the bytes to the end.
std::vector<std::span<const std::uint8_t>> chunksOf(std::span<const std::uint8_t> png)
{
    std::vector<std::span<const std::uint8_t>> chunks;
    auto rest = png.subspan(std::min(png.size(), signatureBytes));
    while (!rest.empty()) {
        if (rest.size() < chunkOverhead || rest.size() - chunkOverhead < readBigEndian(rest))
            return {};
        const std::size_t bytes = chunkOverhead + readBigEndian(rest);
        chunks.push_back(rest.first(bytes));
        rest = rest.subspan(bytes);
    }
    return chunks;
}

bool isExif(std::span<const std::uint8_t> chunk)
{
    static constexpr auto type = "eXIf"sv;
    return std::equal(type.begin(), type.end(), chunk.begin() + 4);
}

/// The EXIF block of a photo of that moment; `existing` is the chunk it had, or empty.
///
/// Only Exiv2's static encoder and decoder are used, which need none of the set-up that is not thread-safe
/// in that library. May throw what Exiv2 throws.
Bytes encodeExif(std::span<const std::uint8_t> existing, const PhotoMoment &moment)
{
    Exiv2::ExifData exif;
    if (!existing.empty())
        Exiv2::ExifParser::decode(exif, existing.data() + 8,
                                  static_cast<std::uint32_t>(existing.size() - chunkOverhead));
    exif["Exif.Image.Software"] = "Skyflare";
    exif["Exif.Photo.DateTimeOriginal"] = moment.date;
    exif["Exif.Photo.SubSecTimeOriginal"] = moment.milliseconds;
    exif["Exif.Photo.OffsetTimeOriginal"] = moment.offset;
    Exiv2::Blob block;
    Exiv2::ExifParser::encode(block, Exiv2::littleEndian, exif);
    return block;
}

} // namespace

Result<Bytes> withExifDate(const Bytes &png, const PhotoMoment &moment)
{
    const auto chunks = chunksOf(png);
    if (chunks.empty())
        return Error{"PNG", 0, "the photo is damaged"};
    const auto found = std::find_if(chunks.begin(), chunks.end(), isExif);
    const auto existing = found != chunks.end() ? *found : std::span<const std::uint8_t>{};
    Bytes dated(png.begin(), png.begin() + signatureBytes);
    dated.reserve(png.size() + 1024);
    try {
        for (const auto chunk : chunks) {
            if (!isExif(chunk))
                dated.insert(dated.end(), chunk.begin(), chunk.end());
            if (chunk.data() == chunks.front().data())
                appendChunk(dated, "eXIf", encodeExif(existing, moment));
        }
    } catch (const std::exception &problem) { // Exiv2's errors derive from it
        return Error{"EXIF", 0, std::string("the photo's date cannot be written: ") + problem.what()};
    }
    return dated;
}

} // namespace skyflare
