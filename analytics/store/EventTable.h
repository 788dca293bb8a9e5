#pragma once

#include "analytics/store/APMSqliteStore.h"

namespace skyflare {

/// What is known of all events of one name. Nothing: never set.
///
/// Threads: any; a value.
struct APMEventAggregates {
    std::string name;
    std::int64_t lifetimeCount = 0;
    std::int64_t currentBundleCount = 0;
    double lastFireTimestamp = 0; ///< seconds since 1970
    std::optional<double> lastBundledTimestamp;
    std::optional<std::int64_t> lastSampledComplexEventID;
    std::optional<std::int64_t> lastSamplingRate;
    std::optional<std::int64_t> lastExemptFromSampling;
    std::optional<std::int64_t> lastBundledDay;
    std::optional<std::int64_t> currentSessionCount;

    bool operator==(const APMEventAggregates &) const = default;
};

/// The table "events": aggregates by event name.
///
/// Threads: its store's, which must outlive it.
class EventTable {
public:
    explicit EventTable(APMSqliteStore &store) : store_(store) {}

    Result<> update(const APMEventAggregates &aggregates);
    Result<std::optional<APMEventAggregates>> withName(std::string_view name);
    /// 1000 at most.
    Result<std::vector<APMEventAggregates>> all();

private:
    APMSqliteStore &store_;
};

} // namespace skyflare
