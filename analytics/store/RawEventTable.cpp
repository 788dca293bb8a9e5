#include "analytics/store/RawEventTable.h"

#include "analytics/proto/EventMessage.h"
#include "analytics/proto/MetadataMessage.h"
#include "analytics/store/StoreLog.h"
#include "platform/base/Text.h"

#include <utility>

namespace skyflare {

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
        forgetCount();
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
    if (inserted && count_)
        ++*count_;
    return inserted;
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
                                             "raw_events ORDER BY rowid ASC LIMIT 1 OFFSET ?)"},
                         {surplus - 1});
}

Result<std::int64_t> RawEventTable::deleteCounted(const APMSqliteStore::Operation &operation,
                                                  const SqliteArguments &arguments)
{
    auto deleted = store_.execute(operation, arguments);
    if (deleted && count_)
        *count_ -= *deleted;
    return deleted;
}

Result<RawEvents> RawEventTable::events(std::int64_t metadataFingerprint, std::int64_t most,
                                        const std::function<bool(const APMEvent &)> &eventFilter)
{
    RawEvents found;
    const auto records = store_.recordsForQuery(
        "SELECT rowid, * FROM raw_events WHERE metadata_fingerprint = ? ORDER BY rowid ASC LIMIT ?",
        {metadataFingerprint, most});
    if (!records)
        return records.error();
    for (const Record &record : *records) {
        found.maxRowID = std::get<std::int64_t>(record.at("rowid"));
        const auto *data = std::get_if<Bytes>(&record.at("data"));
        const bool isRealtime = record.at("is_realtime") == SqliteValue(std::int64_t{1});
        auto event = read(found.maxRowID, data ? *data : Bytes(), isRealtime);
        if (event && (!eventFilter || eventFilter(event->event)))
            found.events.push_back(*std::move(event));
    }
    return found;
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

Result<std::int64_t> RawEventTable::deleteUpTo(std::int64_t maxRowID, std::int64_t metadataFingerprint)
{
    return deleteCounted(
        {"delete raw events", "DELETE FROM raw_events WHERE rowid <= ? AND metadata_fingerprint = ?"},
        {maxRowID, metadataFingerprint});
}

Result<> RawEventTable::deleteUnusedMetadata()
{
    return store_.deleteRecordsFromTableWithName(
        "raw_events_metadata",
        "metadata_fingerprint NOT IN (SELECT DISTINCT metadata_fingerprint FROM raw_events)");
}

Result<std::int64_t> RawEventTable::deleteStale(double now, double age)
{
    if (!(age >= 0))
        return storeLog::refusal(store_.monitor(),
                                 "Cannot delete stale raw events given negative time period");
    return deleteCounted({"delete stale raw events",
                          "DELETE FROM raw_events WHERE abs(timestamp - cast(? as REAL)) > cast(? as REAL)"},
                         {now, age});
}

Result<std::int64_t> RawEventTable::deleteAll()
{
    return deleteCounted({"delete all raw events", "DELETE FROM raw_events"}, {});
}

Result<std::int64_t> RawEventTable::count()
{
    if (!count_) {
        const auto counted = store_.rowCountForTableWithName("raw_events");
        if (!counted)
            return counted.error();
        count_ = *counted;
    }
    return *count_;
}

} // namespace skyflare
