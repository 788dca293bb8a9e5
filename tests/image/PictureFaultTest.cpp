#include "platform/image/Image.h"
#include "tests/image/TestPictures.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <span>

using namespace skyflare;

namespace {

/// A JPEG as cameras write it: a large segment with a whole JPEG in it stands before its own header.
Bytes jpegWithThumbnail()
{
    const Bytes inner = encodeJpeg(makePicture(40, 30, noise), JpegKind::YcbcrHalved);
    Bytes outer = encodeJpeg(makePicture(24, 16, noise), JpegKind::YcbcrHalved);
    const std::size_t length = inner.size() + 2;
    Bytes segment{0xFF, 0xE1, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
    segment.insert(segment.end(), inner.begin(), inner.end());
    outer.insert(outer.begin() + 2, segment.begin(), segment.end());
    return outer;
}

/// Counts what is read of it, and can be gone.
class WatchedBytes final : public ByteSource {
public:
    explicit WatchedBytes(Bytes bytes) : bytes_(std::move(bytes)) {}
    [[nodiscard]] std::uint64_t size() const override { return bytes_.size(); }
    Result<> read(std::uint64_t offset, std::span<std::uint8_t> into) const override
    {
        bytesRead += into.size();
        if (isGone)
            return Error{"test", 7, "the row is gone"};
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), into.size(), into.begin());
        return {};
    }
    mutable std::size_t bytesRead = 0;
    bool isGone = false;

private:
    Bytes bytes_;
};

} // namespace

TEST_CASE("a picture cut short at any byte is refused")
{
    for (const Bytes &whole : {*encodePng(makePicture(24, 16, noise)), jpegWithThumbnail(),
                               encodeJpeg(makePicture(24, 16, noise), JpegKind::Progressive)}) {
        CHECK(Image::fromData(whole));
        Bytes part;
        for (const std::uint8_t next : whole) {
            CAPTURE(part.size());
            CHECK_FALSE(Image::fromData(part));
            part.push_back(next);
        }
    }
    Bytes padded = jpegWithThumbnail();
    for (const std::size_t zeros : {1U, 254U, 255U, 256U, 5000U}) { // as cameras fill up their buffers
        CAPTURE(zeros);
        padded.resize(padded.size() + zeros);
        CHECK(Image::fromData(padded));
    }
}

TEST_CASE("what is no picture, or none that could be held, is refused")
{
    const Bytes png = *encodePng(makePicture(24, 16, noise));
    const auto withSize = [&png](std::uint8_t widthHigh, std::uint8_t width, std::uint8_t height) {
        Bytes changed = png;
        changed[16] = changed[20] = widthHigh;
        changed[19] = width;
        changed[23] = height;
        return changed;
    };
    CHECK_FALSE(Image::fromData(withSize(0, 0, 16)));
    CHECK_FALSE(Image::fromData(withSize(0, 24, 0)));
    CHECK_FALSE(Image::fromData(withSize(0x7F, 24, 16)));
    CHECK_FALSE(Image::fromData(Bytes(500, 0)));
    CHECK_FALSE(Image::fromData(Bytes{'G', 'I', 'F', '8', '9', 'a', 0, 0, 0, 0, 0, 0}));
    CHECK_FALSE(Image::fromData(std::shared_ptr<const ByteSource>()));
    Bytes endless{0xFF, 0xD8};
    endless.resize(300000, 0xFF);
    CHECK_FALSE(Image::fromData(endless));
}

TEST_CASE("looking at a picture reads little of it; its row may go before the pixels are asked for")
{
    for (const Bytes &whole : {*encodePng(makePicture(300, 200, noise)), jpegWithThumbnail(),
                               encodeJpeg(makePicture(300, 200, noise), JpegKind::YcbcrHalved)}) {
        const auto source = std::make_shared<WatchedBytes>(whole);
        const auto image = Image::fromData(source);
        REQUIRE(image);
        CHECK(source->bytesRead < 700);
        source->isGone = true;
        CHECK(image->pixels().error().message == "the row is gone");
        CHECK(image->thumbnail(10, 10).error().code == 7);
        CHECK(image->pngData().error().code == 7);
    }
}

TEST_CASE("a PNG with one wrong byte among its pixels gives an error")
{
    const Bytes whole = *encodePng(makePicture(24, 16, noise));
    for (std::size_t i = 33; i < whole.size() - 12; ++i) {
        CAPTURE(i);
        Bytes damaged = whole;
        damaged[i] ^= 0x10;
        const auto image = Image::fromData(damaged);
        REQUIRE(image);
        CHECK_FALSE(image->pixels());
        CHECK_FALSE(image->thumbnail(5, 5));
    }
}

TEST_CASE("a damaged JPEG gives an error or a picture, never a crash; a torn one an error")
{
    for (const JpegKind kind : {JpegKind::YcbcrHalved, JpegKind::Progressive, JpegKind::Cmyk}) {
        const Bytes whole = encodeJpeg(makePicture(40, 24, noise), kind);
        for (std::size_t i = 2; i < whole.size(); ++i) {
            Bytes damaged = whole;
            damaged[i] ^= 0x5A;
            if (const auto image = Image::fromData(damaged))
                static_cast<void>(image->pixels());
        }
        for (const std::ptrdiff_t bytes : {std::ssize(whole) / 4, std::ptrdiff_t{20}}) {
            Bytes torn = whole;
            torn.erase(torn.end() - bytes, torn.end() - 2);
            const auto image = Image::fromData(torn);
            REQUIRE(image);
            CHECK_FALSE(image->pixels());
            CHECK_FALSE(image->thumbnail(20, 20));
        }
    }
}
