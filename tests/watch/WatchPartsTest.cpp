#include "platform/base/Files.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"
#include "watch/AnalyticsEventText.h"
#include "watch/AnalyticsJson.h"
#include "watch/ContactSheet.h"
#include "watch/FrameTally.h"
#include "watch/PhotoExport.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <iterator>
#include <limits>

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
    for (int i = 0; i < 3; ++i)
        (*photoExport)->add({.uuid = "", .image = greyImage(40, 30), .createdDate = 1'000'000.25});
    (*photoExport)->finish([] {});
    time.runUntilIdle();
    const auto files = std::filesystem::directory_iterator(folder / "new/folder");
    CHECK(std::distance(begin(files), {}) == 4); // with the contact sheet

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

TEST_CASE("an event is shown as it is, whatever it holds")
{
    setenv("TZ", "UTC", 1);
    const APMValue items(APMValue::Array{{{"item_id", APMValue(std::string("a"))}, {"price", APMValue(1.5)}},
                                         {},
                                         {{"n", APMValue(std::int64_t{-3})}}});
    const RawEvent shown{1,
                         {"fa+gtm",
                          "catch_photo",
                          1'751'656'502.25,
                          0,
                          {{"difference", APMValue(0.42)},
                           {"items", items},
                           {"no\nname", APMValue(std::string("\x1B[2J\xFF \"ğ\""))}}},
                         IsRealtime::Yes};
    CHECK(eventText(shown) == "2025-07-04 19:15:02 GMT  catch_photo  from fa+gtm, at once\n"
                              "    difference = 0.42\n"
                              "    items = [{item_id = \"a\", price = 1.5}, {}, {n = -3}]\n"
                              "    \"no\\nname\" = \"\\u{1B}[2J\xEF\xBF\xBD \\\"ğ\\\"\"\n");
    CHECK(eventJson(shown) ==
          R"({"type":"event","time_s":1751656502.25,"name":"catch_photo","origin":"fa+gtm","realtime":true,)"
          R"("parameters":{"difference":0.42,"items":[{"item_id":"a","price":1.5},{},{"n":-3}],)"
          "\"no\\nname\":\"\\u001b[2J\xEF\xBF\xBD \\\"ğ\\\"\"}}");
    for (const double moment : {std::numeric_limits<double>::quiet_NaN(), -1e300, 1e18}) {
        const RawEvent odd{1, {"", "", moment, 0, {}}, IsRealtime::No};
        CHECK(eventText(odd).ends_with("  \"\"  from \"\"\n"));
    }
}

TEST_CASE("the status says why events are recorded or not, and what does not balance")
{
    AnalyticsStatus status;
    CHECK(statusText(status).find("nothing has been recorded") != std::string::npos);
    CHECK(status.balance());
    CHECK(status.whyCollection() == "nothing says otherwise");
    status.options.collectionEnabled = false;
    CHECK(status.whyCollection() == "FIREBASE_ANALYTICS_COLLECTION_ENABLED is false in Info.plist");
    status.collectionChoice = true;
    CHECK(status.whyCollection() == "it was switched on last");
    status.options.collectionDeactivated = true;
    CHECK(status.whyCollection() == "FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED is set in Info.plist");
    CHECK_FALSE(status.isCollectionOn());

    const auto says = [&](const char *text) { return statusText(status).find(text) != std::string::npos; };
    CHECK(says("nothing leaves this device, because no host is set\n"));
    status.options.collectionHost = "collect.example.org";
    CHECK(says("nothing leaves this device, because MIPEME_APP_ID in"));
    status.options.appID = "1:2";
    CHECK(says("Sending:         to https://collect.example.org\n"));
    status.options.configurationHost = "settings.example.org";
    status.options.collectionHost = "http://collect.example.org"; // without TLS
    CHECK(says("no event leaves this device, because MIPEME_ANALYTICS_COLLECTION_HOST in"));
    CHECK(says("; settings are asked of settings.example.org\n"));

    MeasurementStatus &database = status.database.emplace();
    database.dailyCounts = {.day = 7, .eventsCount = 5};
    status.today = 7;
    CHECK(status.countsOfToday().eventsCount == 5);
    status.today = 8; // nothing was recorded today
    CHECK(status.countsOfToday().eventsCount == 0);
    database.ledger[std::size_t(LedgerEntry::Accepted)] = 6;
    database.ledger[std::size_t(LedgerEntry::Stored)] = 5;
    database.waitingEvents = 4;
    CHECK(status.balance().error().message == "rows that wait: counted 5, but there are 4");
    database.waitingEvents = 5; // one event is under way, which another program may be at
    CHECK(status.balance());
    database.bundledEvents = 2;
    CHECK(status.balance().error().message == "events in bundles: counted 0, but there are 2");
}
