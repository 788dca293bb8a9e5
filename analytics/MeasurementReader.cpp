#include "analytics/MeasurementReader.h"

#include "analytics/worker/LedgerRecord.h"

#include <system_error>

#include <utility>

namespace skyflare {

namespace {

/// Longer than a program takes to open or to close the file.
constexpr std::chrono::milliseconds busyTimeout{10000};

std::filesystem::path logOf(const std::filesystem::path &file)
{
    return file.string() + "-wal";
}

std::uintmax_t sizeOf(const std::filesystem::path &file)
{
    std::error_code missing;
    const std::uintmax_t size = std::filesystem::file_size(file, missing);
    return missing ? 0 : size;
}

Error noDatabase(const std::filesystem::path &file)
{
    return Error{"measurement", MeasurementReader::noDatabaseYet,
                 "There is no measurement database at " + file.string()};
}

} // namespace

Result<std::unique_ptr<MeasurementReader>> MeasurementReader::open(const std::filesystem::path &databaseName,
                                                                   APMMonitor &monitor)
{
    std::error_code failed;
    if (!std::filesystem::exists(databaseName, failed))
        return failed ? Error{"measurement", failed.value(),
                              "Cannot look for " + databaseName.string() + ": " + failed.message()}
                      : noDatabase(databaseName);
    // A log that a killed program left stays as it is; one that reading makes goes again.
    const bool hadLog = std::filesystem::exists(logOf(databaseName), failed);
    auto store =
        APMSqliteStore::open(databaseName, monitor, {.busyTimeout = busyTimeout, .mode = OpenMode::Query});
    if (!store)
        return store.error();
    (*store)->database()->setCheckpointsOnClose(!hadLog);
    for (const char *table : {"app_metadata", "raw_events", "user_attributes", "queue"}) {
        const auto isMade = (*store)->tableExists(table);
        if (!isMade)
            return isMade.error();
        if (!*isMade) // another program is just making it, or it is somebody else's
            return noDatabase(databaseName);
    }
    return std::make_unique<MeasurementReader>(databaseName, *std::move(store));
}

Result<MeasurementStatus> MeasurementReader::status()
{
    const auto moment = Transaction::begin(*store_->database(), Transaction::Kind::Read);
    if (!moment)
        return moment.error();
    MeasurementStatus status;
    auto integrity = store_->integrity();
    if (!integrity)
        return integrity.error();
    status.integrity = *std::move(integrity);
    if (const auto counted = readCounts(status); !counted)
        return counted.error();
    const auto daily = AppMetadataTable(*store_).dailyCounts();
    if (!daily)
        return daily.error();
    status.dailyCounts = *daily;
    auto attributes = UserAttributeTable(*store_).all(IncludingInternal::Yes);
    if (!attributes)
        return attributes.error();
    status.userAttributes = *std::move(attributes);
    status.fileBytes = sizeOf(file_) + sizeOf(logOf(file_));
    return status;
}

Result<> MeasurementReader::readCounts(MeasurementStatus &status)
{
    const auto hasLedger = store_->tableExists(LedgerTable::name);
    if (!hasLedger)
        return hasLedger.error();
    if (*hasLedger) { // an older version has none
        const auto counts = LedgerTable(*store_).counts();
        if (!counts)
            return counts.error();
        status.ledger = LedgerRecord::tallyOf(*counts);
    }
    const auto bundles = store_->rowCountForTableWithName("queue");
    if (!bundles)
        return bundles.error();
    status.waitingBundles = *bundles;
    const auto bundled = BundleQueue(*store_).eventCount();
    if (!bundled)
        return bundled.error();
    status.bundledEvents = static_cast<std::int64_t>(*bundled);
    return store_->forEachRow(
        {"query waiting events", "SELECT count(*), MIN(timestamp), MAX(timestamp) FROM raw_events"}, {},
        [&status](const Statement &row) {
            status.waitingEvents = row.integer(0).value_or(0);
            status.oldestEvent = row.real(1);
            status.newestEvent = row.real(2);
        });
}

Result<> MeasurementReader::forEachWaitingEvent(const std::function<void(const RawEvent &)> &event)
{
    return RawEventTable(*store_).forEach(event);
}

} // namespace skyflare
