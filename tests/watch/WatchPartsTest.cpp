#include "platform/base/Files.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"
#include "watch/ContactSheet.h"
#include "watch/FilmTime.h"
#include "watch/FrameTally.h"
#include "watch/PhotoExport.h"

#include <doctest/doctest.h>

#include <vector>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

Image greyImage(int width, int height)
{
    PixelBuffer pixels{.width = width, .height = height, .rgb = {}};
    pixels.rgb.assign(static_cast<std::size_t>(width * height) * 3, 200);
    return *Image::fromData(*encodePng(pixels));
}

} // namespace

TEST_CASE("in film time delayed work comes due before the frame of its moment")
{
    VirtualTime time;
    std::vector<double> ran;
    FilmTime film(
        time.mainQueue(), [&] { time.runUntilIdle(); }, 1'000'000.7);
    const auto note = [&] { ran.push_back(film.secondsSince1970() - 1'000'000); };
    film.queue().asyncAfter(2s, note);
    film.queue().asyncAfter(1s, [&] {
        note();
        film.queue().asyncAfter(500ms, note); // due within the same step
    });

    film.willDeliver(999ms);
    CHECK(ran.empty());
    film.willDeliver(2s);
    CHECK(ran == std::vector{1.0, 1.5, 2.0}); // whole seconds at the start, then the film's own time
    film.willDeliver(5s);
    CHECK(ran.size() == 3);
    CHECK(film.secondsSince1970() == 1'000'005.0);
}

TEST_CASE("a photo is told the trigger it belongs to")
{
    VirtualTime time(100);
    FrameTally tally(time, nullptr);
    const auto trigger = [&](std::chrono::nanoseconds at, double difference) {
        tally.didMeasure({.streamTime = at, .difference = difference, .triggered = true, .captured = true});
    };
    trigger(1s, 0.1);
    time.advance(200ms);
    trigger(1200ms, 0.2);

    SUBCASE("two stills on their way come in order")
    {
        CHECK(tally.takeTrigger(100.3)->streamTime == 1s);
        CHECK(tally.takeTrigger(100.4)->streamTime == 1200ms);
        CHECK_FALSE(tally.takeTrigger(100.5));
    }
    SUBCASE("one of the very moment goes before an older one that came to nothing")
    {
        CHECK(tally.takeTrigger(100.2)->streamTime == 1200ms);
        CHECK_FALSE(tally.takeTrigger(100.2));
    }
    SUBCASE("one that came to nothing long ago is passed over")
    {
        CHECK_FALSE(tally.takeTrigger(106));
    }
}

TEST_CASE("exported photos keep their names apart, and a folder that cannot be written is refused")
{
    const TemporaryFolder folder;
    RecordingConsole console;
    VirtualTime time;
    auto photoExport = PhotoExport::into(folder / "new/folder", time, console);
    REQUIRE(photoExport);
    const Image image = greyImage(40, 30);
    for (int i = 0; i < 3; ++i)
        (*photoExport)->add({.uuid = "", .image = image, .createdDate = 1'000'000.25});
    bool finished = false;
    (*photoExport)->finish([&] { finished = true; });
    time.runUntilIdle();

    CHECK(finished);
    std::size_t files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder / "new/folder")) {
        ++files;
        const std::string name = entry.path().filename();
        const bool named = name.find(".250") != std::string::npos || name == "contact-sheet.png";
        CHECK(named);
    }
    CHECK(files == 4);

    REQUIRE(replaceFile(folder / "file", {}));
    CHECK_FALSE(PhotoExport::into(folder / "file/below", time, console));
}

TEST_CASE("a contact sheet of many photos stays of a size that can be opened")
{
    ContactSheet sheet;
    const Image wide = greyImage(640, 360);
    const Image tall = greyImage(90, 160);
    for (int i = 0; i < 150; ++i)
        REQUIRE(sheet.add(i % 2 ? wide : tall));
    const PixelBuffer drawn = sheet.draw();
    CHECK(drawn.width > 1000);
    CHECK(static_cast<std::int64_t>(drawn.width) * drawn.height < 16'000'000);
}
