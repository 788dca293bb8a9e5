#include "analytics/store/EventTable.h"

namespace skyflare {

namespace {

constexpr std::string_view insertion =
    "INSERT OR REPLACE INTO events (name, lifetime_count, current_bundle_count, last_fire_timestamp, "
    "last_bundled_timestamp, last_sampled_complex_event_id, last_sampling_rate, last_exempt_from_sampling, "
    "last_bundled_day, current_session_count) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

constexpr std::string_view selection =
    "SELECT name, lifetime_count, current_bundle_count, last_fire_timestamp, last_bundled_timestamp, "
    "last_sampled_complex_event_id, last_sampling_rate, last_exempt_from_sampling, last_bundled_day, "
    "current_session_count FROM events";

APMEventAggregates aggregatesOf(const Statement &row)
{
    return {row.text(0).value_or(""),
            row.integer(1).value_or(0),
            row.integer(2).value_or(0),
            row.real(3).value_or(0),
            row.real(4),
            row.integer(5),
            row.integer(6),
            row.integer(7),
            row.integer(8),
            row.integer(9)};
}

} // namespace

Result<> EventTable::update(const APMEventAggregates &aggregates)
{
    return store_.insert(
        {"update event aggregates", insertion},
        {aggregates.name, aggregates.lifetimeCount, aggregates.currentBundleCount,
         aggregates.lastFireTimestamp, argumentOrNull(aggregates.lastBundledTimestamp),
         argumentOrNull(aggregates.lastSampledComplexEventID), argumentOrNull(aggregates.lastSamplingRate),
         argumentOrNull(aggregates.lastExemptFromSampling), argumentOrNull(aggregates.lastBundledDay),
         argumentOrNull(aggregates.currentSessionCount)});
}

Result<std::optional<APMEventAggregates>> EventTable::withName(std::string_view name)
{
    std::optional<APMEventAggregates> found;
    const std::string sql = std::string(selection) + " WHERE name = ?";
    const auto asked = store_.forEachRow({"query event aggregates", sql}, {name},
                                         [&found](const Statement &row) { found = aggregatesOf(row); });
    if (!asked)
        return asked.error();
    return found;
}

Result<std::vector<APMEventAggregates>> EventTable::all()
{
    std::vector<APMEventAggregates> found;
    const std::string sql = std::string(selection) + " LIMIT 1000";
    const auto asked = store_.forEachRow({"query event aggregates", sql}, {}, [&found](const Statement &row) {
        found.push_back(aggregatesOf(row));
    });
    if (!asked)
        return asked.error();
    return found;
}

} // namespace skyflare
