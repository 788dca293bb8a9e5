#include "analytics/store/AppMetadataTable.h"

namespace skyflare {

Result<> AppMetadataTable::makeRowIfMissing()
{
    const auto isMissing =
        store_.integer({"look for app metadata", "SELECT NOT EXISTS (SELECT 1 FROM app_metadata LIMIT 1)"});
    if (!isMissing)
        return isMissing.error();
    if (*isMissing == 0)
        return {};
    return store_.insert(
        {"insert app metadata",
         "INSERT INTO app_metadata (last_bundle_index, last_bundle_end_timestamp) VALUES (0, 0)"},
        {});
}

Result<APMAppMetadata> AppMetadataTable::metadata()
{
    APMAppMetadata metadata;
    const auto asked = store_.forEachRow(
        {"query app metadata", "SELECT last_bundle_index, last_bundle_end_timestamp, "
                               "last_bundle_start_timestamp, last_delivery_index FROM "
                               "app_metadata LIMIT 1"},
        {}, [&metadata](const Statement &row) {
            metadata = {row.integer(0).value_or(0), row.real(1).value_or(0), row.real(2), row.integer(3)};
        });
    if (!asked)
        return asked.error();
    return metadata;
}

Result<> AppMetadataTable::update(const APMAppMetadata &metadata)
{
    const auto &[index, end, start, delivery] = metadata;
    return updateRow("UPDATE app_metadata SET last_bundle_index = ?, last_bundle_end_timestamp = ?, "
                     "last_bundle_start_timestamp = ?, last_delivery_index = ?",
                     {index, end, argumentOrNull(start), argumentOrNull(delivery)});
}

Result<APMDailyCounts> AppMetadataTable::dailyCounts()
{
    APMDailyCounts counts;
    const auto asked = store_.forEachRow(
        {"query daily counts",
         "SELECT day, daily_conversions_count, daily_events_count, daily_public_events_count, "
         "daily_error_events_count, daily_real_time_conversion_events_count, "
         "daily_real_time_dcu_events_count FROM app_metadata LIMIT 1"},
        {}, [&counts](const Statement &row) {
            const auto number = [&row](int column) { return row.integer(column).value_or(0); };
            counts = {number(0), number(1), number(2), number(3), number(4), number(5), number(6)};
        });
    if (!asked)
        return asked.error();
    return counts;
}

Result<> AppMetadataTable::update(const APMDailyCounts &counts)
{
    return updateRow("UPDATE app_metadata SET day = ?, daily_conversions_count = ?, daily_events_count = ?, "
                     "daily_public_events_count = ?, daily_error_events_count = ?, "
                     "daily_real_time_conversion_events_count = ?, daily_real_time_dcu_events_count = ?",
                     {counts.day, counts.conversionsCount, counts.eventsCount, counts.publicEventsCount,
                      counts.errorEventsCount, counts.realtimeConversionEventsCount,
                      counts.realtimeDCUEventsCount});
}

Result<std::optional<APMRemoteConfigRecord>> AppMetadataTable::remoteConfig()
{
    std::optional<APMRemoteConfigRecord> config;
    const auto asked =
        store_.forEachRow({"query remote config",
                           "SELECT remote_config_data, remote_config_timestamp FROM app_metadata LIMIT 1"},
                          {}, [&config](const Statement &row) {
                              if (const auto data = row.bytes(0))
                                  config = {Bytes(data->begin(), data->end()), row.real(1).value_or(0)};
                          });
    if (!asked)
        return asked.error();
    return config;
}

Result<> AppMetadataTable::update(const std::optional<APMRemoteConfigRecord> &config)
{
    return updateRow("UPDATE app_metadata SET remote_config_data = ?, remote_config_timestamp = ?",
                     {config ? SqliteArgument(config->data) : SqliteArgument(),
                      config ? SqliteArgument(config->timestamp) : SqliteArgument()});
}

/// Counters that go nowhere would be lost without a word.
Result<> AppMetadataTable::updateRow(std::string_view sql, const SqliteArguments &arguments)
{
    const auto updated = store_.execute({"update app metadata", sql}, arguments);
    if (!updated)
        return updated.error();
    if (*updated > 0)
        return {};
    if (const auto made = makeRowIfMissing(); !made)
        return made.error();
    return store_.run({"update app metadata", sql}, arguments);
}

} // namespace skyflare
