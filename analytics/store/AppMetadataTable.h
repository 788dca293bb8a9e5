#pragma once

#include "analytics/store/APMSqliteStore.h"

namespace skyflare {

/// Where bundling and delivery stand. Nothing: never set.
///
/// Threads: any; a value.
struct APMAppMetadata {
    std::int64_t lastBundleIndex = 0;
    double lastBundleEndTimestamp = 0; ///< seconds since 1970; 0: there was none
    std::optional<double> lastBundleStartTimestamp;
    std::optional<std::int64_t> lastDeliveryIndex;

    bool operator==(const APMAppMetadata &) const = default;
};

/// What was counted on one day.
///
/// Threads: any; a value.
struct APMDailyCounts {
    std::int64_t day = 0;
    std::int64_t conversionsCount = 0;
    std::int64_t eventsCount = 0;
    std::int64_t publicEventsCount = 0;
    std::int64_t errorEventsCount = 0;
    std::int64_t realtimeConversionEventsCount = 0;
    std::int64_t realtimeDCUEventsCount = 0;

    bool operator==(const APMDailyCounts &) const = default;
};

/// The settings as the server gave them. Any bytes.
///
/// Threads: any; a value.
struct APMRemoteConfigRecord {
    Bytes data;
    double timestamp = 0; ///< when they came, seconds since 1970

    bool operator==(const APMRemoteConfigRecord &) const = default;
};

/// The one row of "app_metadata".
///
/// Threads: its store's, which must outlive it.
class AppMetadataTable {
public:
    explicit AppMetadataTable(APMSqliteStore &store) : store_(store) {}

    Result<> makeRowIfMissing();
    Result<APMAppMetadata> metadata();
    Result<> update(const APMAppMetadata &metadata);
    Result<APMDailyCounts> dailyCounts();
    Result<> update(const APMDailyCounts &counts);
    Result<std::optional<APMRemoteConfigRecord>> remoteConfig();
    Result<> update(const std::optional<APMRemoteConfigRecord> &config);

private:
    APMSqliteStore &store_;

    Result<> updateRow(std::string_view sql, const SqliteArguments &arguments);
};

} // namespace skyflare
