#include "analytics/upload/APMRemoteConfig.h"

#include <doctest/doctest.h>

#include <limits>

namespace skyflare {

TEST_CASE("a setting that is out of its bounds, or no number, is the default")
{
    struct Row {
        const char *key;
        PropertyList value;
        APMSetting setting;
        double expected;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Row rows[] = {
        {"measurement.upload.interval", std::int64_t{5}, APMSetting::UploadInterval, 3600},
        {"measurement.upload.interval", std::int64_t{15}, APMSetting::UploadInterval, 15},
        {"measurement.upload.interval", 86400.5, APMSetting::UploadInterval, 3600},
        {"measurement.upload.interval", nan, APMSetting::UploadInterval, 3600},
        {"measurement.upload.interval", std::string("60"), APMSetting::UploadInterval, 3600},
        {"measurement.upload.max_batch_size", std::int64_t{0}, APMSetting::MaxBatchSize, 0},
        {"measurement.account.time_zone_offset_minutes", std::int64_t{-900},
         APMSetting::TimeZoneOffsetMinutes, -900},
    };
    for (const Row &row : rows) {
        CAPTURE(row.key);
        const APMRemoteConfig config(PropertyList::Dictionary{{row.key, row.value}});
        CHECK(config.number(row.setting) == row.expected);
        CHECK(config.integer(APMSetting::RetryCount) == 6); // what is not named
    }
}

TEST_CASE("a switch takes true and false, 1 and 0, and nothing else")
{
    const char *key = "measurement.item_scoped_custom_parameter_enabled"; // on
    const auto isOn = [key](PropertyList value) {
        const APMRemoteConfig config(PropertyList::Dictionary{{key, std::move(value)}});
        return config.isOn(APMSwitch::ItemScopedCustomParameterEnabled);
    };
    CHECK_FALSE(isOn(false));
    CHECK_FALSE(isOn(std::int64_t{0}));
    CHECK(isOn(1.0));
    CHECK(isOn(std::int64_t{2}));
    CHECK(isOn(std::string("false")));
    CHECK_FALSE(APMRemoteConfig().isOn(APMSwitch::BlacklistPublic));
}

} // namespace skyflare
