#include "logging/LogManager.h"

#include "logging/Timestamp.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>
#include <unicode/locid.h>

#include <cstdlib>

using namespace skyflare;

namespace {

void travelTo(const char *zone)
{
    setenv("TZ", zone, 1);
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale("en_US"), status);
}

} // namespace

TEST_CASE("an event is stamped with the date, time and offset of where the device is now")
{
    const auto stampIn = [](const char *zone) {
        travelTo(zone);
        return localTimestamp(1'751'656'502.9);
    };
    CHECK(stampIn("Europe/Berlin") == "2025-07-04 21:15:02 GMT+02:00");
    CHECK(stampIn("UTC") == "2025-07-04 19:15:02 GMT");
    CHECK(stampIn("Asia/Kolkata") == "2025-07-05 00:45:02 GMT+05:30");
    CHECK(stampIn("America/St_Johns") == "2025-07-04 16:45:02 GMT-02:30");
    CHECK(isoTimestamp(1'751'656'502.9) == "2025-07-04T19:15:02Z");
    CHECK(isoTimestamp(-0.5) == "1969-12-31T23:59:59Z");
}

TEST_CASE("an event is echoed with its name and its parameters, each in its own form")
{
    travelTo("UTC");
    const VirtualTime time;
    RecordingConsole console;
    LogManager log(time, console);

    log.logEvent(LogEvent::StartCapture);
    log.logEvent(LogEvent::CatchPhoto, {{"difference", 0.42F}, {"totalPhotos", std::int64_t{7}}});
    log.logEvent(LogEvent::ButtonTapped, {{"timestamp", "mine"}, {"buttonName", "a \"b\"\\\n\x01 ğ"}});

    CHECK(console.lines() ==
          std::vector<std::string>{
              R"(Logged event: start_capture with parameters: ["timestamp": "2023-11-14 22:13:20 GMT"])",
              R"(Logged event: catch_photo with parameters: ["difference": 0.42, )"
              R"("timestamp": "2023-11-14 22:13:20 GMT", "totalPhotos": 7])",
              R"(Logged event: button_tapped with parameters: )"
              R"(["buttonName": "a \"b\"\\\n\u{01} ğ", "timestamp": "mine"])"});
}
