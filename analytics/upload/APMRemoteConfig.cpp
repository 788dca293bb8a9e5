#include "analytics/upload/APMRemoteConfig.h"

#include <algorithm>
#include <optional>

namespace skyflare {

namespace {

struct SettingRow {
    APMSetting setting;
    std::string_view key;
    double defaultValue;
    double minimum;
    double maximum;
};

constexpr std::array<SettingRow, apmSettingCount> settingRows{{
    {APMSetting::UploadInterval, "measurement.upload.interval", 3600, 15, 86400},
    {APMSetting::InitialUploadDelayTime, "measurement.upload.initial_upload_delay_time", 15, 1, 86400},
    {APMSetting::RealtimeUploadInterval, "measurement.upload.realtime_upload_interval", 10, 10, 15},
    {APMSetting::DebugUploadInterval, "measurement.upload.debug_upload_interval", 1, 1, 15},
    {APMSetting::RetryTime, "measurement.upload.retry_time", 1800, 60, 86400},
    {APMSetting::RetryCount, "measurement.upload.retry_count", 6, 1, 24},
    {APMSetting::BackoffPeriod, "measurement.upload.backoff_period", 43200, 3600, 604800},
    {APMSetting::MaxBundles, "measurement.upload.max_bundles", 100, 1, 10000},
    {APMSetting::MaxEventsPerBundle, "measurement.upload.max_events_per_bundle", 1000, 1, 1000000},
    {APMSetting::MaxBatchSize, "measurement.upload.max_batch_size", 65536, 0, 10485760},
    {APMSetting::MaxBundlesCreatedPerIteration, "measurement.upload.max_bundles_created_per_iteration", 100,
     1, 10000},
    {APMSetting::MaxQueueTime, "measurement.upload.max_queue_time", 2419200, 604800, 7862400},
    {APMSetting::StaleDataDeletionInterval, "measurement.upload.stale_data_deletion_interval", 86400, 3600,
     604800},
    {APMSetting::MaxEventsPerDay, "measurement.upload.max_events_per_day", 100000, 0, 1000000},
    {APMSetting::MaxPublicEventsPerDay, "measurement.upload.max_public_events_per_day", 50000, 0, 1000000},
    {APMSetting::MaxErrorEventsPerDay, "measurement.upload.max_error_events_per_day", 1000, 0, 1000000},
    {APMSetting::MaxConversionsPerDay, "measurement.upload.max_conversions_per_day", 10000, 0, 1000000},
    {APMSetting::MaxRealtimeEventsPerDay, "measurement.upload.max_realtime_events_per_day", 10, 0, 10},
    {APMSetting::MaxPublicUserProperties, "measurement.upload.max_public_user_properties", 100, 25, 100},
    {APMSetting::MaxEventNameCardinality, "measurement.upload.max_event_name_cardinality", 2000, 500, 2000},
    {APMSetting::MaxPublicEventParams, "measurement.upload.max_public_event_params", 100, 25, 100},
    {APMSetting::MaxEventParameterValueLength, "measurement.upload.max_event_parameter_value_length", 500,
     100, 500},
    {APMSetting::MaxItemScopedCustomParameters, "measurement.upload.max_item_scoped_custom_parameters", 27,
     10, 35},
    {APMSetting::MaxStoredEventsPerApp, "measurement.store.max_stored_events_per_app", 100000, 0, 1000000},
    {APMSetting::NetworkTimeout, "measurement.network.network_timeout", 60, 30, 3600},
    {APMSetting::ConfigCacheTime, "measurement.config.cache_time", 3600, 60, 86400},
    {APMSetting::TimeZoneOffsetMinutes, "measurement.account.time_zone_offset_minutes", 0, -900, 900},
    {APMSetting::AudienceMaxCount, "measurement.audience.max_count", 100, 0, 500},
    {APMSetting::FilterMaxCountPerAudience, "measurement.audience.filter_max_count_per_audience", 10, 0, 100},
    {APMSetting::FilterResultMaxCount, "measurement.audience.filter_result_max_count", 200, 0, 2000},
    {APMSetting::ParameterMaxCountFilter, "measurement.audience.parameter_max_count_filter", 25, 0, 250},
    {APMSetting::MaxCurrencyTracked, "measurement.lifetimevalue.max_currency_tracked", 4, 1, 100},
    {APMSetting::MonitoringSamplePeriodMillis, "measurement.monitoring.sample_period_millis", 86400, 0,
     604800},
    {APMSetting::SessionTimeoutInterval, "measurement.session.default_timeout_interval", 1800, 0, 86400},
    {APMSetting::SessionMinimumInterval, "measurement.session.default_minimum_interval", 10, 0, 86400},
    {APMSetting::EventUserEngagementInterval, "measurement.session.event_user_engagement_interval", 3600, 0,
     86400},
}};

struct SwitchRow {
    APMSwitch which;
    std::string_view key;
    bool defaultValue;
};

constexpr std::array<SwitchRow, apmSwitchCount> switchRows{{
    {APMSwitch::BackgroundSessionEnabled, "measurement.network.background_session_enabled", false},
    {APMSwitch::BlacklistInternal, "measurement.upload.blacklist_internal", false},
    {APMSwitch::BlacklistPublic, "measurement.upload.blacklist_public", false},
    {APMSwitch::EventSamplingEnabled, "measurement.event_sampling_enabled", false},
    {APMSwitch::QualityChecksum, "measurement.quality.checksum", false},
    {APMSwitch::ItemScopedCustomParameterEnabled, "measurement.item_scoped_custom_parameter_enabled", true},
    {APMSwitch::EfficientEngagementReportingEnabled,
     "measurement.collection.efficient_engagement_reporting_enabled", false},
    {APMSwitch::RedundantEngagementRemovalEnabled,
     "measurement.collection.redundant_engagement_removal_enabled", false},
    {APMSwitch::AppBackgroundedTracking, "measurement.lifecycle.app_backgrounded_tracking", false},
    {APMSwitch::AppInBackgroundParameter, "measurement.lifecycle.app_in_background_parameter", true},
    {APMSwitch::SessionIDApi, "measurement.api.session_id", true},
}};

template <typename Rows, typename Key> constexpr bool isInOrder(const Rows &rows, Key key)
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (static_cast<std::size_t>(rows[i].*key) != i)
            return false;
    }
    return true;
}
static_assert(isInOrder(settingRows, &SettingRow::setting) && isInOrder(switchRows, &SwitchRow::which));

std::optional<double> numberIn(const PropertyList::Dictionary &values, std::string_view key)
{
    const auto found = values.find(key);
    if (found == values.end())
        return {};
    if (const auto *integer = found->second.as<std::int64_t>())
        return static_cast<double>(*integer);
    const auto *real = found->second.as<double>();
    return real ? std::optional(*real) : std::nullopt;
}

std::optional<bool> flagIn(const PropertyList::Dictionary &values, std::string_view key)
{
    const auto found = values.find(key);
    if (found == values.end())
        return {};
    if (const bool *flag = found->second.as<bool>())
        return *flag;
    const auto number = numberIn(values, key);
    return number && (*number == 0 || *number == 1) ? std::optional(*number == 1) : std::nullopt;
}

} // namespace

APMRemoteConfig::APMRemoteConfig() : APMRemoteConfig(PropertyList::Dictionary()) {}

APMRemoteConfig::APMRemoteConfig(const PropertyList::Dictionary &values)
{
    for (std::size_t i = 0; i < settingRows.size(); ++i) {
        const SettingRow &row = settingRows[i];
        const double value = numberIn(values, row.key).value_or(row.defaultValue);
        const bool isWithin = value >= row.minimum && value <= row.maximum; // which no NaN is
        numbers_[i] = isWithin ? value : row.defaultValue;
    }
    for (std::size_t i = 0; i < switchRows.size(); ++i)
        switches_[i] = flagIn(values, switchRows[i].key).value_or(switchRows[i].defaultValue);
}

bool APMRemoteConfig::isKey(std::string_view key)
{
    return std::ranges::find(settingRows, key, &SettingRow::key) != settingRows.end() ||
           std::ranges::find(switchRows, key, &SwitchRow::key) != switchRows.end();
}

} // namespace skyflare
