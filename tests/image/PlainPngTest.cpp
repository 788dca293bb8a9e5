#include "platform/image/Image.h"
#include "platform/image/PlainPngDecoder.h"
#include "platform/image/PngChunk.h"
#include "platform/image/PngDecoder.h"
#include "tests/image/TestPictures.h"

#include <doctest/doctest.h>
#include <zlib.h>

#include <algorithm>

using namespace skyflare;

namespace {

void append(Bytes &png, std::string_view type, std::span<const std::uint8_t> data)
{
    Bytes chunk(data.size() + pngChunkFrame);
    std::ranges::copy(data, pngChunkData(chunk.data()));
    endPngChunk(chunk.data(), type, pngChunkData(chunk.data()) + data.size());
    png.insert(png.end(), chunk.begin(), chunk.end());
}

/// 8-bit RGB, its pixels' data in chunks of at most that size.
Bytes pngOf(int width, int height, const Bytes &stream, std::size_t chunkBytes)
{
    Bytes header(13);
    putBigEndian(putBigEndian(header.data(), static_cast<std::uint32_t>(width)),
                 static_cast<std::uint32_t>(height));
    header[8] = 8;
    header[9] = 2;
    Bytes png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    append(png, "IHDR", header);
    append(png, "teXt", header);
    for (std::size_t at = 0; at < stream.size(); at += chunkBytes)
        append(png, "IDAT", std::span(stream).subspan(at, std::min(chunkBytes, stream.size() - at)));
    append(png, "IEND", {});
    return png;
}

Bytes deflated(const Bytes &bytes)
{
    uLongf size = compressBound(bytes.size());
    Bytes stream(size);
    CHECK(compress(stream.data(), &size, bytes.data(), bytes.size()) == Z_OK);
    stream.resize(size);
    return stream;
}

/// Rows of every filter, as if filtered: any bytes stand for some pixels.
Bytes filteredNoise(int width, int height)
{
    Bytes bytes;
    for (int y = 0; y < height; ++y) {
        bytes.push_back(static_cast<std::uint8_t>(scattered(y, 7, 0) % 5));
        for (int i = 0; i < 3 * width; ++i)
            bytes.push_back(scattered(i, y, 1));
    }
    return bytes;
}

} // namespace

TEST_CASE("the quick PNG decoder sees what the one for every kind sees")
{
    struct Row {
        int width;
        int height;
        std::size_t chunkBytes;
    };
    for (const Row &row : {Row{1, 1, 1}, Row{37, 200, 5}, Row{700, 300, 8192}, Row{60'000, 3, 1'000'000}}) {
        CAPTURE(row.width);
        const Bytes png =
            pngOf(row.width, row.height, deflated(filteredNoise(row.width, row.height)), row.chunkBytes);
        const auto quick = PlainPngDecoder::open(png);
        const auto general = PngDecoder::open(png);
        REQUIRE(quick);
        REQUIRE(general);
        const auto seen = decodeAllRows(*quick);
        REQUIRE(seen);
        CHECK(seen->rgb == decodeAllRows(**general)->rgb);
        Bytes more(std::size_t{3} * 60'000);
        CHECK_FALSE(quick->readRow(more));
    }
    CHECK_FALSE(PlainPngDecoder::open(Bytes{}));
}

TEST_CASE("data that is damaged behind right checksums of its chunks is an error")
{
    const Bytes filtered = filteredNoise(20, 30);
    const auto decode = [](const Bytes &stream) {
        return Image::fromData(pngOf(20, 30, stream, 100))->pixels();
    };
    CHECK(decode(deflated(filtered)));
    Bytes stream = deflated(filtered);
    stream.back() ^= 1; // of its own checksum
    CHECK_FALSE(decode(stream));
    stream = deflated(filtered);
    stream.resize(stream.size() / 2);
    CHECK_FALSE(decode(stream));
    CHECK_FALSE(decode(deflated(Bytes(filtered.begin(), filtered.end() - 1))));
    CHECK_FALSE(decode(deflated(filteredNoise(20, 31))));
    Bytes unknown = filtered;
    unknown[61] = 5; // the second row's filter
    CHECK_FALSE(decode(deflated(unknown)));
}

TEST_CASE("the small copy of a frame is that of its photo")
{
    const auto slopes = [](int x, int y) {
        return Samples{static_cast<std::uint8_t>(x / 8), static_cast<std::uint8_t>(y / 6), 90};
    };
    for (const PixelFormat format : {PixelFormat::RGB, PixelFormat::RGBx}) {
        const VideoFrame frame = makeFrame(format, 2000, 1400, 5, slopes);
        const auto copy = encodeReduced(frame);
        REQUIRE(copy);
        const auto seen = Image::fromData(std::make_shared<MemoryBytes>(*copy))->pixels();
        const auto expected = Image::fromData(*encodePng(frame))->thumbnail(5000, 640);
        REQUIRE(seen);
        REQUIRE(seen->width == 914);
        REQUIRE(seen->height == 640);
        int worst = 0;
        for (std::size_t i = 0; i < seen->rgb.size(); ++i)
            worst = std::max(worst, std::abs(seen->rgb[i] - expected->rgb[i]));
        CHECK(worst <= 6);
    }
    CHECK_FALSE(encodeReduced(makeFrame(PixelFormat::RGB, 640, 800, 0, slopes))); // as small itself
    CHECK_FALSE(encodeReduced(VideoFrame{}));
}
