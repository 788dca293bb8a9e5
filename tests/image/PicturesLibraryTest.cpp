#include "platform/linux/PicturesLibrary.h"

#include "platform/base/Files.h"
#include "platform/linux/NewFile.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>
#include <exiv2/exiv2.hpp>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <set>

using namespace skyflare;

namespace {

constexpr double moment = 1795374233.412; // 2026-11-22 19:03:53.412 UTC

struct LibraryFixture {
    VirtualTime time;
    TemporaryFolder home;
    std::filesystem::path folder = home / "Pictures/Skyflare";
    PicturesLibrary library{folder, time.globalUserInitiated()};

    explicit LibraryFixture(const char *zone = "TST-3")
    {
        setenv("TZ", zone, 1);
        tzset();
    }

    static Image picture(std::uint8_t red, int width = 40)
    {
        PixelBuffer pixels = PixelBuffer::ofSize(width, 30);
        for (std::size_t i = 0; i < pixels.rgb.size(); i += 3)
            pixels.rgb[i] = static_cast<std::uint8_t>(red + i * i % 7);
        return *Image::fromData(*encodePng(pixels));
    }
    LibraryChange add(const Image &image, double date = moment)
    {
        std::optional<LibraryChange> answer;
        library.createAsset(image, date, [&answer](const LibraryChange &change) { answer = change; });
        CHECK_FALSE(answer); // only after the call has returned
        time.runUntilIdle();
        return answer.value();
    }
    AuthorizationStatus authorization()
    {
        std::optional<AuthorizationStatus> answer;
        library.requestAuthorization([&answer](AuthorizationStatus status) { answer = status; });
        time.runUntilIdle();
        return answer.value();
    }
    [[nodiscard]] std::set<std::string> names() const
    {
        std::set<std::string> names;
        for (const auto &file : std::filesystem::directory_iterator(folder))
            names.insert(file.path().filename().string());
        return names;
    }
    [[nodiscard]] Image stored(const std::string &name) const
    {
        return *Image::fromData(readFile(folder / name).value());
    }
};

std::string exifOf(const std::filesystem::path &file, const std::string &key)
{
    const auto image = Exiv2::ImageFactory::open(file.string());
    image->readMetadata();
    return image->exifData()[key].toString();
}

} // namespace

TEST_CASE_FIXTURE(LibraryFixture,
                  "a photo gets its moment as name, EXIF date and file time, and keeps its pixels")
{
    CHECK(authorization() == AuthorizationStatus::Authorized);
    CHECK(names().empty()); // the trial leaves nothing
    const Image image = LibraryFixture::picture(9);
    CHECK(add(image).success);
    const std::string name = "Skyflare 2026-11-22 22.03.53.412.png";
    CHECK(names() == std::set{name});
    const auto file = folder / name;
    CHECK(exifOf(file, "Exif.Photo.DateTimeOriginal") == "2026:11:22 22:03:53");
    CHECK(exifOf(file, "Exif.Photo.SubSecTimeOriginal") == "412");
    CHECK(exifOf(file, "Exif.Photo.OffsetTimeOriginal") == "+03:00");
    CHECK(std::system(("pngcheck -q '" + file.string() + "'").c_str()) == 0);
    struct stat status {};
    REQUIRE(stat(file.c_str(), &status) == 0);
    CHECK(status.st_mtim.tv_sec == 1795374233);
    CHECK(status.st_mtim.tv_nsec == 412'000'000);
    CHECK(stored(name).pixels()->rgb == image.pixels()->rgb);

    LibraryFixture west("TST+5:30");
    CHECK(west.add(stored(name)).success); // has an EXIF date already
    const auto again = west.folder / "Skyflare 2026-11-22 13.33.53.412.png";
    CHECK(exifOf(again, "Exif.Photo.DateTimeOriginal") == "2026:11:22 13:33:53");
    CHECK(exifOf(again, "Exif.Photo.OffsetTimeOriginal") == "-05:30");
    CHECK(std::system(("pngcheck -q '" + again.string() + "'").c_str()) == 0);
}

TEST_CASE_FIXTURE(LibraryFixture, "photos of one moment all survive, and nothing is ever replaced")
{
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "Skyflare 2026-11-22 22.03.53.412.png") << "somebody's";
    CHECK(add(LibraryFixture::picture(1)).success);
    CHECK(add(LibraryFixture::picture(2)).success);
    CHECK(names() == std::set<std::string>{"Skyflare 2026-11-22 22.03.53.412.png",
                                           "Skyflare 2026-11-22 22.03.53.412 (2).png",
                                           "Skyflare 2026-11-22 22.03.53.412 (3).png"});
    CHECK(readFile(folder / "Skyflare 2026-11-22 22.03.53.412.png")->size() == 10);
    CHECK(stored("Skyflare 2026-11-22 22.03.53.412 (2).png").pixels()->rgb[0] == 1);
    CHECK(stored("Skyflare 2026-11-22 22.03.53.412 (3).png").pixels()->rgb[0] == 2);
}

TEST_CASE_FIXTURE(LibraryFixture,
                  "a deleted folder is made again; where none can be, access is denied and the error says so")
{
    CHECK(add(LibraryFixture::picture(1)).success);
    std::filesystem::remove_all(folder);
    CHECK(add(LibraryFixture::picture(1)).success);
    CHECK(names().size() == 1);

    std::filesystem::remove_all(folder);
    std::ofstream(folder) << "a file";
    CHECK(authorization() == AuthorizationStatus::Denied);
    const LibraryChange change = add(LibraryFixture::picture(1));
    CHECK_FALSE(change.success);
    CHECK(change.error->message ==
          "there is no folder for the photo: move away what stands in place of " + folder.string());
}

TEST_CASE_FIXTURE(LibraryFixture, "a photo that cannot be written to its end leaves nothing behind")
{
    const Image large = LibraryFixture::picture(5, 4000);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{(*large.pngData())->size() / 2, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const LibraryChange change = add(large);
    setrlimit(RLIMIT_FSIZE, &usual);
    CHECK_FALSE(change.success);
    CHECK(change.error->message == "the photo was not written to " + folder.string() + ": File too large");
    CHECK(names().empty());
    CHECK(add(large).success);
}

TEST_CASE("what a killed process left half-written goes after an hour")
{
    const TemporaryFolder folder;
    for (const char *name : {".skyflare-1-0.part", ".hidden", "photo.part"})
        std::ofstream(folder / name) << "half";
    NewFile::removeLeftovers(folder.path(), std::time(nullptr) + 3500);
    CHECK(std::filesystem::exists(folder / ".skyflare-1-0.part"));
    NewFile::removeLeftovers(folder.path(), std::time(nullptr) + 3700);
    CHECK_FALSE(std::filesystem::exists(folder / ".skyflare-1-0.part"));
    CHECK(std::filesystem::exists(folder / ".hidden"));
    CHECK(std::filesystem::exists(folder / "photo.part"));
    NewFile::removeLeftovers(folder / "missing", std::time(nullptr));
}
