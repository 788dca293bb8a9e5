#include "analytics/store/EventTable.h"

namespace skyflare {

namespace {

#define SKYFLARE_EVENT_COLUMNS                                                                               \
    "name, lifetime_count, current_bundle_count, last_fire_timestamp, last_bundled_timestamp, "              \
    "last_sampled_complex_event_id, last_sampling_rate, last_exempt_from_sampling, last_bundled_day, "       \
    "current_session_count"

template <typename Number> SqliteArgument argumentOrNull(const std::optional<Number> &number)
{
    return number ? SqliteArgument(*number) : SqliteArgument();
}

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
        {"update event aggregates",
         "INSERT OR REPLACE INTO events (" SKYFLARE_EVENT_COLUMNS ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"},
        {aggregates.name, aggregates.lifetimeCount, aggregates.currentBundleCount,
         aggregates.lastFireTimestamp, argumentOrNull(aggregates.lastBundledTimestamp),
         argumentOrNull(aggregates.lastSampledComplexEventID), argumentOrNull(aggregates.lastSamplingRate),
         argumentOrNull(aggregates.lastExemptFromSampling), argumentOrNull(aggregates.lastBundledDay),
         argumentOrNull(aggregates.currentSessionCount)});
}

Result<std::optional<APMEventAggregates>> EventTable::withName(std::string_view name)
{
    std::optional<APMEventAggregates> found;
    const auto asked = store_.forEachRow(
        {"query event aggregates", "SELECT " SKYFLARE_EVENT_COLUMNS " FROM events WHERE name = ?"}, {name},
        [&found](const Statement &row) { found = aggregatesOf(row); });
    if (!asked)
        return asked.error();
    return found;
}

Result<std::vector<APMEventAggregates>> EventTable::all()
{
    std::vector<APMEventAggregates> found;
    const auto asked = store_.forEachRow(
        {"query event aggregates", "SELECT " SKYFLARE_EVENT_COLUMNS " FROM events LIMIT 1000"}, {},
        [&found](const Statement &row) { found.push_back(aggregatesOf(row)); });
    if (!asked)
        return asked.error();
    return found;
}

} // namespace skyflare
