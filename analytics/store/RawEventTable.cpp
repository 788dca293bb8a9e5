#include "analytics/store/RawEventTable.h"

#include "analytics/proto/EventMessage.h"
#include "analytics/proto/MetadataMessage.h"
#include "analytics/store/StoreLog.h"
#include "platform/base/Text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace skyflare {

namespace {

constexpr double oldestTime = -std::numeric_limits<double>::infinity();

/// Where a row has what: a table of another version may have columns in between.
struct RawEventColumns {
    int name = 0, timestamp = 0, data = 0, isRealtime = 0;

    static RawEventColumns of(const Statement &row)
    {
        RawEventColumns columns;
        for (int column = 1; column < row.columnCount(); ++column) {
            const std::string name = row.columnName(column);
            int *const place = name == "name"          ? &columns.name
                               : name == "timestamp"   ? &columns.timestamp
                               : name == "data"        ? &columns.data
                               : name == "is_realtime" ? &columns.isRealtime
                                                       : nullptr;
            if (place)
                *place = column;
        }
        return columns;
    }
};

} // namespace

RawEventMetadata RawEventMetadata::of(const APMMetadata &metadata)
{
    Bytes data = MetadataMessage::encode(metadata);
    return {MetadataMessage::fingerprint(data), std::move(data)};
}

Result<> RawEventTable::insertMetadataIfNotExists(const RawEventMetadata &metadata)
{
    return store_.insert(
        {"insert raw event metadata",
         "INSERT OR IGNORE INTO raw_events_metadata (metadata_fingerprint, metadata) VALUES (?, ?)"},
        {metadata.fingerprint, metadata.data});
}

Result<std::optional<APMMetadata>> RawEventTable::metadata(std::int64_t fingerprint)
{
    std::optional<Result<APMMetadata>> decoded;
    const auto asked =
        store_.forEachRow({"query raw event metadata",
                           "SELECT metadata FROM raw_events_metadata WHERE metadata_fingerprint = ?"},
                          {fingerprint}, [&decoded](const Statement &row) {
                              const auto bytes = row.bytes(0);
                              decoded =
                                  MetadataMessage::decode(bytes.value_or(std::span<const std::uint8_t>()));
                          });
    if (!asked)
        return asked.error();
    if (!decoded)
        return std::optional<APMMetadata>();
    if (!*decoded)
        return decoded->error();
    return std::optional<APMMetadata>(**std::move(decoded));
}

Result<> RawEventTable::insert(const APMEvent &event, std::int64_t metadataFingerprint, IsRealtime isRealtime,
                               std::int64_t maxStoredEvents)
{
    if (maxStoredEvents <= 0)
        return storeLog::refusal(store_.monitor(), "Failed to insert data type. Table is full");
    const auto number = count();
    if (!number)
        return number.error();
    if (*number < maxStoredEvents)
        return insertRow(event, metadataFingerprint, isRealtime);
    Result<> done = store_.together([&]() -> Result<> {
        if (const auto trimmed = trim(maxStoredEvents); !trimmed)
            return trimmed.error();
        return insertRow(event, metadataFingerprint, isRealtime);
    });
    if (!done)
        forget();
    return done;
}

Result<> RawEventTable::insertRow(const APMEvent &event, std::int64_t metadataFingerprint,
                                  IsRealtime isRealtime)
{
    const std::string name = validUtf8(event.name);
    const Bytes data = EventMessage::encode(event);
    auto inserted = store_.insert(
        {"insert raw event", "INSERT INTO raw_events (name, timestamp, metadata_fingerprint, data, "
                             "is_realtime) VALUES (?, ?, ?, ?, ?)"},
        {name, event.timestamp, metadataFingerprint, data, std::int64_t{isRealtime == IsRealtime::Yes}});
    if (!inserted)
        return inserted;
    if (auto *const number = count_.known())
        ++*number;
    if (auto *const newest = newest_.known())
        *newest = std::max(newest->value_or(event.timestamp), event.timestamp);
    if (isRealtime == IsRealtime::Yes)
        hasRealtime_.set(true);
    return {};
}

/// Deletes what "rowid IN (SELECT rowid FROM raw_events ORDER BY rowid DESC LIMIT -1 OFFSET ?)" would with
/// the limit minus one, from the other end: without walking over all rows that stay.
Result<std::int64_t> RawEventTable::trim(std::int64_t maxStoredEvents)
{
    const auto number = count();
    if (!number)
        return number.error();
    const std::int64_t surplus = *number - (maxStoredEvents - 1);
    if (surplus <= 0 || maxStoredEvents <= 0)
        return std::int64_t{0};
    return deleteCounted({"trim raw events", "DELETE FROM raw_events WHERE rowid <= (SELECT rowid FROM "
                                             "raw_events ORDER BY rowid ASC LIMIT 1 OFFSET ?) RETURNING "
                                             "timestamp"},
                         {surplus - 1});
}

/// @param operation  a deletion that returns the times of what it deletes
Result<std::int64_t> RawEventTable::deleteCounted(const APMSqliteStore::Operation &operation,
                                                  const SqliteArguments &arguments)
{
    std::int64_t rows = 0;
    double newest = oldestTime;
    const auto deleted = store_.forEachRow(operation, arguments, [&](const Statement &row) {
        ++rows;
        newest = std::max(newest, row.real(0).value_or(newest));
    });
    if (!deleted)
        return deleted.error();
    didDelete(rows, newest);
    return rows;
}

void RawEventTable::didDelete(std::int64_t rows, double newest)
{
    if (rows == 0)
        return;
    auto *const number = count_.known();
    if (number)
        *number -= rows;
    if (number && *number == 0)
        newest_.set(std::nullopt);
    else if (const auto *const known = newest_.known(); known && newest >= known->value_or(oldestTime))
        newest_.forget();
    if (const bool *const hasRealtime = hasRealtime_.known(); hasRealtime && *hasRealtime)
        hasRealtime_.forget();
}

Result<> RawEventTable::events(std::int64_t metadataFingerprint, std::int64_t most,
                               const EventFilter &eventFilter)
{
    std::optional<RawEventColumns> columns;
    RawEventRow event;
    return store_.forEachRow(
        {"query raw events",
         "SELECT rowid, * FROM raw_events WHERE metadata_fingerprint = ? ORDER BY rowid ASC LIMIT ?"},
        {metadataFingerprint, most}, [&](const Statement &row) {
            if (!columns)
                columns = RawEventColumns::of(row);
            event.rowID = row.integer(0).value_or(0);
            event.name = row.text(columns->name).value_or("");
            event.timestamp = row.real(columns->timestamp).value_or(std::numeric_limits<double>::quiet_NaN());
            event.data = row.bytes(columns->data).value_or(std::span<const std::uint8_t>());
            event.isRealtime = row.integer(columns->isRealtime) == 1 ? IsRealtime::Yes : IsRealtime::No;
            return eventFilter(event);
        });
}

Result<> RawEventTable::forEach(const std::function<void(const RawEvent &)> &event)
{
    return store_.forEachRow(
        {"query all raw events", "SELECT rowid, data, is_realtime FROM raw_events ORDER BY rowid ASC"}, {},
        [&](const Statement &row) {
            const auto data = row.bytes(1).value_or(std::span<const std::uint8_t>());
            if (const auto found = read(row.integer(0).value_or(0), data, row.integer(2) == 1))
                event(*found);
        });
}

std::optional<RawEvent> RawEventTable::read(std::int64_t rowID, std::span<const std::uint8_t> data,
                                            bool isRealtime) const
{
    auto event = EventMessage::decode(data);
    if (event && !event->name.empty())
        return RawEvent{rowID, *std::move(event), isRealtime ? IsRealtime::Yes : IsRealtime::No};
    writeLog(store_.monitor(), storeLog::unreadableEvent,
             std::to_string(rowID) + ", " + (event ? "it has no name" : event.error().message));
    return {};
}

Result<std::int64_t> RawEventTable::deleteUpTo(std::int64_t maxRowID, std::int64_t metadataFingerprint,
                                               double newest)
{
    auto deleted = store_.execute(
        {"delete raw events", "DELETE FROM raw_events WHERE rowid <= ? AND metadata_fingerprint = ?"},
        {maxRowID, metadataFingerprint});
    if (deleted)
        didDelete(*deleted, newest);
    return deleted;
}

Result<> RawEventTable::deleteUnusedMetadata()
{
    return store_.deleteRecordsFromTableWithName(
        "raw_events_metadata",
        "metadata_fingerprint NOT IN (SELECT DISTINCT metadata_fingerprint FROM raw_events)");
}

/// Does not look at every event, as that would.
Result<> RawEventTable::deleteMetadataIfUnused(std::int64_t fingerprint)
{
    return store_.run({"delete unused metadata",
                       "DELETE FROM raw_events_metadata WHERE metadata_fingerprint = ?1 AND NOT EXISTS "
                       "(SELECT 1 FROM raw_events WHERE metadata_fingerprint = ?1)"},
                      {fingerprint});
}

Result<std::int64_t> RawEventTable::deleteStale(double now, double age)
{
    if (!(age >= 0))
        return storeLog::refusal(store_.monitor(),
                                 "Cannot delete stale raw events given negative time period");
    return deleteCounted({"delete stale raw events",
                          "DELETE FROM raw_events WHERE abs(timestamp - cast(? as REAL)) > cast(? as REAL) "
                          "RETURNING timestamp"},
                         {now, age});
}

Result<std::int64_t> RawEventTable::deleteAll()
{
    auto deleted = store_.execute({"delete all raw events", "DELETE FROM raw_events"});
    if (deleted)
        forget();
    return deleted;
}

Result<std::int64_t> RawEventTable::count()
{
    return count_.get([this] { return store_.rowCountForTableWithName("raw_events"); });
}

Result<bool> RawEventTable::isEmpty()
{
    if (const auto *const number = count_.known())
        return *number == 0;
    return store_.isTrue({"look for raw events", "SELECT NOT EXISTS (SELECT 1 FROM raw_events LIMIT 1)"});
}

Result<bool> RawEventTable::hasRealtime()
{
    return hasRealtime_.get([this] {
        return store_.isTrue({"look for realtime raw events",
                              "SELECT EXISTS (SELECT 1 FROM raw_events WHERE is_realtime = 1 LIMIT 1)"});
    });
}

Result<std::optional<double>> RawEventTable::newestTimestamp()
{
    return newest_.get([this] { return store_.numberForQuery("SELECT MAX(timestamp) FROM raw_events"); });
}

void RawEventTable::forget()
{
    count_.forget();
    newest_.forget();
    hasRealtime_.forget();
}

} // namespace skyflare
