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
    const std::pair<PropertyList, bool> rows[] = {{false, false},
                                                  {std::int64_t{0}, false},
                                                  {1.0, true},
                                                  {std::int64_t{2}, true},
                                                  {std::string("false"), true}};
    for (const auto &[value, expected] : rows) { // of what is on by itself
        const PropertyList::Dictionary given{{"measurement.item_scoped_custom_parameter_enabled", value}};
        const APMRemoteConfig config(given);
        CHECK(config.isOn(APMSwitch::ItemScopedCustomParameterEnabled) == expected);
    }
    CHECK_FALSE(APMRemoteConfig().isOn(APMSwitch::BlacklistPublic));
}

} // namespace skyflare
