#include "analytics/upload/SettingsAnswer.h"
#include "analytics/upload/UploadHost.h"
#include "analytics/upload/UploadSchedule.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

namespace skyflare {

namespace {

Result<SettingsAnswer> parse(const std::string &json)
{
    return SettingsAnswer::parse(Bytes(json.begin(), json.end()));
}

} // namespace

TEST_CASE("when what waits may go")
{
    constexpr double now = 1'700'000'000;
    constexpr double day = 86'400;
    struct Row {
        const char *what;
        UploadState state;
        double expected; ///< seconds after now; none: 0
    };
    constexpr double none = std::numeric_limits<double>::infinity();
    const Row rows[] = {
        {"nothing waits", {}, none},
        {"a first event", {.newestEvent = now}, 15},
        {"a bundle alone", {.newestBundle = now - 5}, 10},
        {"the newer of both", {.newestEvent = now - 9, .newestBundle = now - 5}, 10},
        {"an hour after the last success", {.newestEvent = now, .lastSuccess = now - 100}, 3'500},
        {"real-time", {.newestEvent = now, .hasRealtime = true, .lastSuccess = now - 4}, 6},
        {"debug mode", {.newestEvent = now, .isDebug = true, .lastSuccess = now - 4}, 1},
        {"debug mode after a failure", {.newestEvent = now - 60, .isDebug = true, .lastFailure = now}, 1'755},
        {"a failure before the event", {.newestEvent = now, .lastFailure = now - 1}, 15},
        {"the first retry", {.newestEvent = now - 15, .lastFailure = now}, 1'800},
        {"the second", {.newestEvent = now - 1'815, .lastFailure = now}, 3'600},
        {"the sixth", {.newestEvent = now - 55'816, .lastFailure = now}, 57'599},
        {"a failure at that time itself", {.newestEvent = now - 113'415, .lastFailure = now}, none},
        {"an event from the future", {.newestEvent = now + day}, 15 - day},
        {"which failed; no event is newer", {.newestEvent = now + 9 * day, .lastFailure = now}, 57'600},
        {"a success in the future", {.newestEvent = now, .lastSuccess = now + day}, 15},
        {"a failure in the future", {.newestEvent = now, .lastFailure = now + day}, 15},
        {"a back-off", {.newestEvent = now - 15, .lastFailure = now, .lastBackoff = now}, 43'200},
        {"a back-off, and nothing waits", {.lastBackoff = now}, none},
        {"a back-off that is over", {.newestEvent = now, .lastBackoff = now - 43'200}, 15},
        {"a back-off in the future", {.newestEvent = now, .lastBackoff = now + 2 * day}, 15},
    };
    for (const Row &row : rows) {
        CAPTURE(row.what);
        const double next = nextTryTime(row.state, APMRemoteConfig(), now);
        CHECK((next == 0 ? none : next - now) == row.expected);
    }
    // A clock that begins with 1970.
    CHECK(nextUploadingTime({.newestEvent = 30}, APMRemoteConfig(), 30) == 45);
}

TEST_CASE("a suspension is by uptime, and does not outlast the machine")
{
    CHECK(suspensionLeft(8'600, 5'000) == 3'600);
    CHECK(suspensionLeft(8'600, 8'600) == 0);
    CHECK(suspensionLeft(8'600, 20) == 0); // the machine was restarted
    CHECK(suspensionLeft(std::numeric_limits<double>::quiet_NaN(), 20) == 0);
}

TEST_CASE("a host is a host and nothing else, and plain http for this machine alone")
{
    struct Row {
        const char *text;
        const char *url;
        const char *below; ///< with a subdomain
    };
    const Row rows[] = {
        {"HTTPS://collect.example.org:8443/", "https://collect.example.org:8443",
         "https://eu-1.collect.example.org:8443"},
        {"my_host", "https://my_host", "https://eu-1.my_host"},
        {"http://127.0.0.1:8765", "http://127.0.0.1:8765", "http://127.0.0.1:8765"},
        {"http://[::1]:8765", "http://[::1]:8765", "http://[::1]:8765"},
        {"http://localhost", "http://localhost", "http://localhost"},
        {"192.0.2.7", "https://192.0.2.7", "https://192.0.2.7"},
    };
    for (const Row &row : rows) {
        CAPTURE(row.text);
        const auto host = UploadHost::parse(row.text);
        REQUIRE(host);
        CHECK(host->url("/a") == std::string(row.url) + "/a");
        CHECK(host->withSubdomain("eu-1").url("/a") == std::string(row.below) + "/a");
        for (const char *label : {"", "a.b", "-a", "a/b", "a@b", "\xC3\xA4"})
            CHECK(host->withSubdomain(label) == *host);
    }
    for (const char *text :
         {"http://collect.example.org", "http://127.0.0.1.example.org", "127.1", "http://0x7f.0.0.1",
          "ftp://localhost", "https://", "a.org/a", "me@a.org", "a.org?a", "a.org:0", "a.org:", "-x.org",
          "two hosts", "a..b", "[::1", "[a]b]"}) {
        CAPTURE(text);
        CHECK_FALSE(UploadHost::parse(text));
    }
}

TEST_CASE("settings are one JSON object; what is no setting in it is passed over")
{
    const auto answer = parse(R"({"measurement.upload.interval": 1800, "measurement.upload.retry_count": "7",
        "measurement.quality.checksum": true, "uploadSubdomain": "eu", "other": 1, "list": [{"a": []}],
        "measurement.upload.max_batch_size": 99999999999999999999})");
    REQUIRE(answer);
    CHECK(answer->uploadSubdomain == "eu");
    CHECK(answer->values == PropertyList::Dictionary{{"measurement.upload.interval", 1800.0},
                                                     {"measurement.quality.checksum", true},
                                                     {"measurement.upload.max_batch_size", 1e20}});
    for (const char *text : {"", "[1]", "7", "{\"a\": 1", "{\"a\": 1e999}", "{\"\xFF\": 1}"})
        CHECK_FALSE(parse(text));
    for (const std::string &text : {"{\"a\":" + std::string(9'000, '['), "{}" + std::string(65'536, ' ')})
        CHECK_FALSE(parse(text));
}

TEST_CASE("what is out of its bounds, or of another kind, is the default")
{
    const auto with = [](const std::string &key, const std::string &value) {
        return APMRemoteConfig(parse("{\"measurement." + key + "\": " + value + "}")->values);
    };
    for (const auto &[given, interval] :
         {std::pair("5", 3600), {"15", 15}, {"86400.5", 3600}, {"\"60\"", 3600}, {"true", 3600}})
        CHECK(with("upload.interval", given).number(APMSetting::UploadInterval) == interval);
    CHECK(with("upload.max_batch_size", "0").number(APMSetting::MaxBatchSize) == 0);
    constexpr auto offset = APMSetting::TimeZoneOffsetMinutes;
    CHECK(with("account.time_zone_offset_minutes", "-900").number(offset) == -900);
    const PropertyList::Dictionary none{{"measurement.upload.interval", std::nan("")}};
    CHECK(APMRemoteConfig(none).number(APMSetting::UploadInterval) == 3600);

    const std::string item = "item_scoped_custom_parameter_enabled";
    for (const auto &[given, isOn] :
         {std::pair("false", false), {"0", false}, {"1", true}, {"2", true}, {"\"false\"", true}})
        CHECK(with(item, given).isOn(APMSwitch::ItemScopedCustomParameterEnabled) == isOn);
    CHECK_FALSE(APMRemoteConfig().isOn(APMSwitch::BlacklistPublic));
}

} // namespace skyflare
