#include "platform/base/Files.h"
#include "tests/store/StoreFixture.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <fstream>

using namespace skyflare;
namespace fs = std::filesystem;

namespace {

PixelBuffer plain(int width, int height, std::uint8_t red)
{
    auto pixels = PixelBuffer::ofSize(width, height);
    for (std::size_t i = 0; i < pixels.rgb.size(); i += 3)
        pixels.rgb[i] = red;
    return pixels;
}

/// Dark, and with a small copy that is not, so that what is shown says where it comes from.
Image photo(int width, int height)
{
    const auto size = reducedSize({width, height}).value_or(PictureSize{width, height});
    return Image::fromData(*encodePng(plain(width, height, 10)))
        ->withReduced(std::make_shared<ReducedInMemory>(*encodeReduced(plain(size.width, size.height, 200))));
}

struct ThumbnailFixture : StoreFixture {
    fs::path cache = folder / "cache";
    ThumbnailCache thumbnails{cache, time.globalUserInitiated()};
    PhotoDataManager photos{{user, user.center, time, user.console, &thumbnails}};

    Image newest() { return photos.fetchImages(1).at(0).image; }
    fs::path fileOf(std::size_t index) { return cache / (user.uuids().at(index) + ".jpg"); }
    /// The red of the photo as a thumbnail of that size; -1 where there is none.
    int redAt(int width, int height)
    {
        const auto shown = newest().thumbnail(width, height);
        return shown ? shown->rgb.at(0) : -1;
    }
    std::ptrdiff_t files() const
    {
        return std::distance(fs::directory_iterator(cache), fs::directory_iterator());
    }
};

bool isNear(int value, int expected)
{
    return std::abs(value - expected) <= 2; // JPEG
}

} // namespace

TEST_CASE_FIXTURE(ThumbnailFixture, "a photo is shown small from the copy that it was caught with")
{
    photos.saveImage(photo(1600, 1280));
    CHECK(isNear(redAt(100, 100), 200));
    CHECK(isNear(redAt(800, 640), 200));
    CHECK_FALSE(newest().quickThumbnail(800, 640));
    CHECK(redAt(801, 641) == 10); // larger than the copy: from the photo, and until then
    const auto quick = newest().quickThumbnail(801, 641);
    REQUIRE(quick);
    CHECK(quick->width == 800);
    CHECK(quick->height == 640);
    CHECK(isNear(quick->rgb.at(0), 200));

    for (const Bytes &copy : {Bytes(), Bytes(5000, 7), **encodeReduced(plain(640, 800, 200))}) {
        CAPTURE(copy.size());
        REQUIRE(replaceFile(fileOf(0), copy)); // cut short, damaged, of another shape
        CHECK(redAt(100, 100) == 10);
        CHECK(isNear((*Image::fromData(*readFile(fileOf(0)))->pixels()).rgb.at(0), 10)); // made anew
    }
}

TEST_CASE_FIXTURE(ThumbnailFixture,
                  "photos that are small have no copy, and without a place for it there is none")
{
    photos.saveImage(Image(photo(640, 1280)).withReduced(nullptr));
    CHECK(redAt(100, 100) == 10);
    CHECK_FALSE(fs::exists(cache));
    std::ofstream(cache) << "in the way";
    photos.saveImage(photo(1600, 1280));
    CHECK(redAt(100, 100) == 10);
    user.insert("../photo", std::make_shared<MemoryBytes>(*photo(1600, 1280).pngData()), 2e9);
    CHECK(redAt(100, 100) == 10);
    CHECK(user.console.lines().empty());
}

TEST_CASE_FIXTURE(ThumbnailFixture,
                  "a copy goes with its photo, and one that a photo has left behind goes later")
{
    for (int number = 0; number < 3; ++number)
        photos.saveImage(photo(800, 650));
    const fs::path middle = fileOf(1);
    photos.deletePhoto(user.uuids().at(1));
    time.runUntilIdle();
    CHECK_FALSE(fs::exists(middle));

    const fs::path old = cache / ".skyflare-1-0.tmp";
    const fs::path fresh = cache / ".skyflare-1-1.tmp";
    for (const fs::path &file : {middle, old, fresh})
        std::ofstream(file) << "x";
    fs::last_write_time(old, fs::file_time_type::clock::now() - std::chrono::hours(1));
    photos.sweepThumbnails();
    time.runUntilIdle();
    CHECK(files() == 3);
    CHECK(fs::exists(fileOf(0)));
    CHECK(fs::exists(fileOf(1)));
    CHECK(fs::exists(fresh));

    photos.deleteAllPhotos();
    photos.saveImage(photo(800, 650));
    time.runUntilIdle();
    CHECK(files() == 2);
    CHECK(fs::exists(fileOf(0)));
}
