#include "platform/image/Image.h"

#include "platform/base/Files.h"
#include "platform/base/Handle.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/image/TestPictures.h"

#include <doctest/doctest.h>
#include <spng.h>
#include <zlib.h>

#include <cmath>
#include <cstdlib>
#include <numeric>

using namespace skyflare;

namespace {

/// A night sky with noise, a burst and a plain part.
Samples sky(int x, int y)
{
    const double distance = std::hypot(x - 200, y - 150);
    const int glow = static_cast<int>(220 * std::exp(-distance * distance / 900));
    const int noise = y < 300 ? scattered(x, y, 0) % 9 : 0;
    return {static_cast<std::uint8_t>(16 + glow + noise), static_cast<std::uint8_t>(12 + glow / 2),
            static_cast<std::uint8_t>(30 + noise)};
}

/// Whether the pixels' one zlib stream (RFC 1950) ends as it should, checksum and all, which decoders let
/// pass.
bool isWholeStream(const Bytes &png, std::size_t filteredBytes)
{
    Bytes stream;
    for (std::size_t at = 8; at < png.size();) {
        const auto chunk = std::span(png).subspan(at);
        const std::size_t length = std::size_t{chunk[1]} << 16 | std::size_t{chunk[2]} << 8 | chunk[3];
        if (chunk[4] == 'I' && chunk[5] == 'D')
            stream.insert(stream.end(), chunk.begin() + 8, chunk.begin() + 8 + static_cast<long>(length));
        at += length + 12;
    }
    Bytes filtered(filteredBytes + 1);
    uLongf size = filtered.size();
    return uncompress(filtered.data(), &size, stream.data(), stream.size()) == Z_OK && size == filteredBytes;
}

/// 0 if pngcheck, a program, finds nothing wrong.
int pngcheck(const Bytes &png)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "picture.png";
    CHECK(replaceFile(file, png));
    return std::system(("pngcheck -q " + file.string()).c_str());
}

Bytes encodedBySpng(const Bytes &pixels, spng_ihdr header)
{
    const Handle<spng_ctx, &spng_ctx_free> encoder(spng_ctx_new(SPNG_CTX_ENCODER));
    spng_set_option(encoder.get(), SPNG_ENCODE_TO_BUFFER, 1);
    spng_set_ihdr(encoder.get(), &header);
    spng_encode_image(encoder.get(), pixels.data(), pixels.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    std::size_t size = 0;
    int code = 0;
    const Handle<void, &std::free> owned(spng_get_png_buffer(encoder.get(), &size, &code));
    const auto *data = static_cast<const std::uint8_t *>(owned.get());
    return {data, data + size};
}

double meanOf(const PixelBuffer &pixels)
{
    return std::accumulate(pixels.rgb.begin(), pixels.rgb.end(), 0.0) /
           static_cast<double>(pixels.rgb.size());
}

} // namespace

TEST_CASE("a picture encoded as PNG is valid, has the same pixels and the same bytes with any threads")
{
    // Plain as it begins, then stripes, then ever more noise: each way to code a strip, in one picture.
    const auto changing = [](int x, int y) {
        const auto grain = static_cast<std::uint8_t>(y < 1200 ? 0 : scattered(x, y, 0) % (y / 100));
        const auto stripe = static_cast<std::uint8_t>(y < 400 ? 0 : x % 7 * 30);
        return Samples{grain, static_cast<std::uint8_t>(stripe + grain), stripe};
    };
    PngEncoder alone(1); // used again for pictures of other sizes
    PngEncoder three(3);
    Bytes png;
    Bytes sameAgain;
    for (const auto &picture :
         {makePicture(1, 1, noise), makePicture(700, 3000, changing), makePicture(3, 2, noise),
          makePicture(700, 500, noise), makePicture(641, 481, sky), makePicture(2, 3000, sky),
          makePicture(100000, 5, noise)}) {
        CAPTURE(picture.width);
        REQUIRE(alone.encode(PixelRows(picture), png));
        REQUIRE(three.encode(PixelRows(picture), sameAgain));
        CHECK(png == sameAgain);
        CHECK(encodePng(picture).value() == png);
        CHECK(pngcheck(png) == 0);
        CHECK(isWholeStream(png, picture.rgb.size() + static_cast<std::size_t>(picture.height)));
        const auto image = Image::fromData(png);
        REQUIRE(image);
        CHECK(image->width() == picture.width);
        CHECK(image->height() == picture.height);
        CHECK(image->pixels()->rgb == picture.rgb);
    }
    CHECK(encodePng(PixelBuffer::ofSize(4000, 1000))->size() < 17000); // really compressed
    CHECK_FALSE(encodePng(PixelBuffer{}));

    const VideoFrame frame = makeFrame(PixelFormat::NV12, 701, 900, 3, changing);
    CHECK(encodePng(frame).value() == encodePng(*convertToRgb(frame)).value());
    CHECK_FALSE(encodePng(VideoFrame{}));
}

TEST_CASE("a picture that came as PNG gives its own bytes, not a copy")
{
    const auto bytes = std::make_shared<const Bytes>(*encodePng(makePicture(20, 10, noise)));
    const auto image = Image::fromData(std::make_shared<const MemoryBytes>(bytes));
    CHECK(*image->pngData() == bytes);

    const auto jpeg = Image::fromData(encodeJpeg(makePicture(20, 10, sky), JpegKind::YcbcrFull));
    CHECK(Image::fromData(**jpeg->pngData())->pixels()->rgb == jpeg->pixels()->rgb);
}

TEST_CASE("every kind of JPEG comes out as RGB")
{
    const PixelBuffer plain = makePicture(33, 17, [](int, int) { return Samples{180, 60, 120}; });
    for (const JpegKind kind : {JpegKind::YcbcrHalved, JpegKind::YcbcrFull, JpegKind::Progressive,
                                JpegKind::Gray, JpegKind::Cmyk}) {
        CAPTURE(static_cast<int>(kind));
        const PixelBuffer pixels = *Image::fromData(encodeJpeg(plain, kind))->pixels();
        const auto last = pixels.row(16).last(3);
        const Samples expected = kind == JpegKind::Gray ? Samples{103, 103, 103} : Samples{180, 60, 120};
        for (std::size_t c = 0; c < 3; ++c)
            CHECK(std::abs(last[c] - expected[c]) <= 2);
    }
}

TEST_CASE("every kind of PNG comes out as RGB")
{
    const auto decode = [](const Bytes &png) { return Image::fromData(png)->pixels()->rgb; };
    // Width, height, bits, colours; then the usual methods and whether it is interlaced.
    CHECK(decode(encodedBySpng({0x40}, {2, 1, 1, SPNG_COLOR_TYPE_GRAYSCALE, 0, 0, 0})) ==
          Bytes{0, 0, 0, 255, 255, 255});
    CHECK(decode(encodedBySpng({1, 2, 3, 0}, {1, 1, 8, SPNG_COLOR_TYPE_TRUECOLOR_ALPHA, 0, 0, 0})) ==
          Bytes{1, 2, 3});
    CHECK(decode(encodedBySpng({9, 9, 8, 8, 7, 7}, {1, 1, 16, SPNG_COLOR_TYPE_TRUECOLOR, 0, 0, 0})) ==
          Bytes{9, 8, 7});
    const PixelBuffer large = makePicture(37, 21, noise);
    CHECK(decode(encodedBySpng(large.rgb, {37, 21, 8, SPNG_COLOR_TYPE_TRUECOLOR, 0, 0, 1})) == large.rgb);
}

TEST_CASE("reducing averages by area, edges in part")
{
    const PixelBuffer row{3, 1, {0, 30, 255, 90, 60, 255, 255, 92, 255}};
    CHECK(reduced(row, 2, 1).rgb == Bytes{30, 40, 255, 200, 81, 255});
    CHECK(reduced(row, 1, 1).rgb == Bytes{115, 61, 255});
    CHECK(reduced(row, 3, 1).rgb == row.rgb);
    const PixelBuffer column{1, 5, {0, 0, 0, 10, 0, 0, 20, 0, 0, 30, 0, 0, 40, 0, 0}};
    CHECK(reduced(column, 1, 2).rgb == Bytes{8, 0, 0, 32, 0, 0});
    CHECK(reduced(column, 9, 9).rgb == column.rgb); // never enlarged
    PixelBuffer tall = PixelBuffer::ofSize(1, 1000);
    std::fill(tall.rgb.begin(), tall.rgb.end(), std::uint8_t{255});
    CHECK(reduced(tall, 1, 3).rgb == Bytes(9, 255)); // more rows than fit into a small sum
}

TEST_CASE("a thumbnail fits the box, keeps the shape and the mean")
{
    const PixelBuffer picture = makePicture(640, 480, sky);
    for (const Bytes &encoded : {*encodePng(picture), encodeJpeg(picture, JpegKind::YcbcrHalved)}) {
        const auto image = Image::fromData(encoded);
        const auto sizeOf = [&image](int width, int height) {
            const auto small = image->thumbnail(width, height);
            REQUIRE(small);
            CHECK(std::abs(meanOf(*small) - meanOf(*image->pixels())) < 0.7);
            return std::pair{small->width, small->height};
        };
        CHECK(sizeOf(100, 100) == std::pair{100, 75});
        CHECK(sizeOf(1000, 101) == std::pair{135, 101});
        CHECK(sizeOf(13, 1000) == std::pair{13, 10});
        CHECK(sizeOf(5000, 5000) == std::pair{640, 480});
        CHECK(sizeOf(1, 1) == std::pair{1, 1});
    }
}
