#include "analytics/store/APMDatabase.h"

#include "analytics/store/MeasurementTables.h"
#include "analytics/store/StoreLog.h"

#include <sqlite3.h>
#include <system_error>

#include <cmath>
#include <utility>

namespace skyflare {

namespace {

// With a log, whatever was committed is the system's to keep: a killed process loses nothing. NORMAL leaves
// out the wait for the disk at every commit, so that a power failure may take the last transactions, but
// never damages the file. Events are worth less than the battery and the camera's time on the disk. The
// commit that fills the log folds it in, which does wait for the disk: every 8 MiB, as twice of that takes
// over 50 ms.
constexpr const char *connectionSql = "PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 2048;"
                                      "PRAGMA journal_size_limit = 33554432; PRAGMA cache_size = -8000;";

/// Nothing: the file is whole. What is wrong with it, or an error where it could not be asked, which says
/// nothing about it.
Result<std::optional<std::string>> damageIn(APMSqliteStore &store)
{
    const auto answer = store.integrity();
    if (answer && *answer == "ok")
        return std::optional<std::string>();
    if (!answer && !APMDatabase::isDamage(answer.error()))
        return answer.error();
    return std::optional<std::string>(answer ? *answer : answer.error().message);
}

/// The same. A disk that does not answer makes SQLite speak of damage, too: so what is to be deleted has been
/// read through, and said it twice.
Result<std::optional<std::string>> certainDamageIn(APMSqliteStore &store)
{
    auto damage = damageIn(store);
    if (!damage || !*damage)
        return damage;
    if (const auto read = store.database()->readThrough(); !read)
        return storeLog::refusal(store.monitor(), "Database cannot be read: " + read.error().message);
    return damageIn(store);
}

void exclude(const APMDatabase::Services &services, const std::filesystem::path &file)
{
    if (!services.excludeFromBackup)
        return;
    if (const auto excluded = services.excludeFromBackup(file); !excluded)
        writeLog(services.monitor, storeLog::notExcludedFromBackup, excluded.error().description());
}

Result<std::unique_ptr<APMSqliteStore>> openAndValidate(const std::filesystem::path &file,
                                                        const APMDatabase::Services &services,
                                                        const APMSqliteStore::Options &options)
{
    for (bool isNew = false;; isNew = true) {
        auto store = APMSqliteStore::open(file, services.monitor, options);
        if (!store)
            return store.error();
        exclude(services, file);
        const auto damage = certainDamageIn(**store);
        if (!damage)
            return damage.error();
        if (!*damage)
            return store;
        writeLog(services.monitor, storeLog::validationFailed, **damage);
        if (isNew)
            return Error{"store", 8, "A new database fails its integrity check", {{"path", file.string()}}};
        if (const auto deleted = (*store)->closeAndDeleteDatabase(); !deleted) {
            writeLog(services.monitor, storeLog::notDeleted, deleted.error().description());
            return deleted.error();
        }
    }
}

} // namespace

struct APMDatabase::CappedTable {
    std::string_view insertion;
    std::string_view name;
    std::string_view surplus; ///< the condition that the rows beyond the newest 1000 fulfil
};

APMDatabase::APMDatabase(OwnerLock lock, std::unique_ptr<APMSqliteStore> store, Services services,
                         StoreLimits limits)
    : lock_(std::move(lock)), store_(std::move(store)), services_(std::move(services)), limits_(limits)
{
}

Result<std::unique_ptr<APMDatabase>> APMDatabase::open(const std::filesystem::path &databaseName,
                                                       const Services &services, const StoreLimits &limits,
                                                       const APMSqliteStore::Options &options)
{
    std::error_code failed;
    std::filesystem::create_directories(databaseName.parent_path(), failed);
    if (failed)
        return Error{"folder", failed.value(), failed.message(), {{"path", databaseName.string()}}};
    auto lock = OwnerLock::acquire(databaseName);
    if (!lock)
        return lock.error();
    auto store = openAndValidate(databaseName, services, options);
    if (!store)
        return store.error();
    auto database = std::make_unique<APMDatabase>(*std::move(lock), *std::move(store), services, limits);
    if (const auto prepared = database->prepare(); !prepared)
        return prepared.error();
    return database;
}

Result<> APMDatabase::prepare()
{
    if (store_->database()->isReadOnly())
        return storeLog::refusal(services_.monitor, "Database is read-only");
    if (const auto mode = store_->execute({"set journal mode", "PRAGMA journal_mode = WAL"}); !mode)
        return mode.error();
    if (const auto done = store_->database()->execute(connectionSql); !done)
        return done.error();
    ensureAllTables();
    ensureAllIndexes();
    return appMetadata_.makeRowIfMissing();
}

void APMDatabase::ensureAllTables()
{
    for (const auto &[name, info] : measurementTables()) {
        if (const auto ensured = store_->ensureTableWithName(name, info); !ensured)
            writeLog(services_.monitor, storeLog::tableNotEnsured,
                     std::string(name) + ", " + ensured.error().message);
    }
}

/// Without one all works, but slowly.
void APMDatabase::ensureAllIndexes()
{
    for (const auto &[name, sql] : measurementIndexes()) {
        if (const auto made = store_->run({"make index", sql}); !made)
            writeLog(services_.monitor, storeLog::indexNotMade,
                     std::string(name) + ", " + made.error().message);
    }
}

bool APMDatabase::isDamage(const Error &error)
{
    return error.domain == "SQLite" && (error.code == SQLITE_NOTADB || error.code == SQLITE_CORRUPT);
}

bool APMDatabase::hasMoved() const
{
    return store_->database() && store_->database()->hasMoved();
}

Result<> APMDatabase::endTransaction(Result<> done)
{
    done = store_->endTransaction(std::move(done));
    if (!done)
        forget();
    return done;
}

void APMDatabase::forget()
{
    rawEvents_.forget();
    bundles_.forget();
}

Result<> APMDatabase::performTransactionWithError(const std::function<Result<>()> &block)
{
    Result<> done = store_->performTransactionWithError(block);
    if (!done)
        forget();
    return done;
}

Result<> APMDatabase::insertSubscriptionWithID(std::string_view subscriptionID)
{
    return insertCapped({"INSERT OR REPLACE INTO subscriptions (subscription_id) VALUES (?)", "subscriptions",
                         "rowid IN (SELECT rowid FROM subscriptions ORDER BY rowid DESC LIMIT -1 OFFSET ?)"},
                        subscriptionID);
}

Result<> APMDatabase::insertPurchaseTransactionWithFingerprint(std::string_view fingerprint)
{
    return insertCapped(
        {"INSERT OR REPLACE INTO purchase_transactions (fingerprint) VALUES (?)", "purchase_transactions",
         "rowid IN (SELECT rowid FROM purchase_transactions ORDER BY rowid DESC LIMIT -1 OFFSET ?)"},
        fingerprint);
}

Result<> APMDatabase::insertCapped(const CappedTable &table, std::string_view key)
{
    constexpr std::int64_t mostRows = 1000;
    return store_->together([&]() -> Result<> {
        if (const auto inserted = store_->insert({"insert key", table.insertion}, {key}); !inserted)
            return inserted.error();
        return store_->deleteRecordsFromTableWithName(table.name, table.surplus, {mostRows});
    });
}

Result<> APMDatabase::removeEvents(const std::function<Result<RemovedEvents>()> &block,
                                   const AlongWith &alongWith)
{
    return performTransactionWithError([&]() -> Result<> {
        const auto removed = block();
        if (!removed)
            return removed.error();
        return alongWith ? alongWith(*removed) : Result<>();
    });
}

Result<> APMDatabase::maybeDeleteStaleData(const AlongWith &alongWith)
{
    const double now = services_.clock.secondsSince1970();
    // A last time that lies ahead was taken from a wrong clock, and would put this off until then.
    const double passed = std::abs(now - services_.persistedConfig.lastStaleDataDeletion());
    if (passed <= limits_.staleDataDeletionInterval)
        return {};
    auto deleted = removeEvents([this, now] { return deleteStaleData(now); }, alongWith);
    if (deleted)
        services_.persistedConfig.setLastStaleDataDeletion(now);
    return deleted;
}

Result<APMDatabase::RemovedEvents> APMDatabase::deleteStaleData(double now)
{
    const auto events = rawEvents_.deleteStale(now, limits_.maxQueueTime);
    if (!events)
        return events.error();
    const auto inBundles = bundles_.deleteStale(now, limits_.maxQueueTime);
    if (!inBundles)
        return inBundles.error();
    writeLog(services_.monitor, storeLog::staleDataDeleted,
             std::to_string(*events) + ", " + std::to_string(*inBundles));
    // Where nothing is uploaded, nobody else does.
    if (const auto unused = rawEvents_.deleteUnusedMetadata(); !unused)
        return unused.error();
    const auto isQueueEmpty = bundles_.isEmpty();
    if (!isQueueEmpty)
        return isQueueEmpty.error();
    return RemovedEvents{static_cast<std::uint64_t>(*events), *inBundles, *isQueueEmpty};
}

Result<> APMDatabase::reset(const AlongWith &alongWith)
{
    auto wiped = removeEvents([this] { return deleteAll(); }, alongWith);
    if (!wiped)
        return wiped;
    // The rows are gone; now what they held goes from the pages as well. It may wait for a reader to end.
    Result<> compacted = store_->database()->execute("VACUUM");
    if (compacted)
        compacted = store_->database()->checkpoint(Checkpoint::Truncate);
    if (!compacted)
        writeLog(services_.monitor, storeLog::notCompacted, compacted.error().description());
    return wiped;
}

Result<APMDatabase::RemovedEvents> APMDatabase::deleteAll()
{
    const auto events = rawEvents_.deleteAll();
    if (!events)
        return events.error();
    const auto inBundles = bundles_.eventCount();
    if (!inBundles)
        return inBundles.error();
    for (const MeasurementTable &table : measurementTables()) {
        if (table.name == LedgerTable::name)
            continue;
        if (const auto deleted = store_->deleteAllRecordsFromTableWithName(table.name); !deleted)
            return deleted.error();
    }
    bundles_.forget();
    if (const auto made = appMetadata_.makeRowIfMissing(); !made)
        return made.error();
    return RemovedEvents{static_cast<std::uint64_t>(*events), *inBundles, true};
}

/// A checkpoint syncs the log before it moves anything into the file.
Result<> APMDatabase::writeThrough()
{
    if (!store_->database())
        return storeLog::refusal(services_.monitor, "Database not open");
    return store_->database()->checkpoint(Checkpoint::Passive);
}

Result<std::int64_t> APMDatabase::numberOf(const APMSqliteStore::Operation &question,
                                           const SqliteArguments &arguments)
{
    const auto answer = store_->integer(question, arguments);
    if (!answer)
        return answer.error();
    return answer->value_or(0);
}

Result<std::optional<std::int64_t>> APMDatabase::nextMetadataFingerprintToProcess()
{
    return store_->integer(
        {"query next fingerprint", "SELECT metadata_fingerprint, MIN(rowid) FROM raw_events"});
}

Result<bool> APMDatabase::hasBundlesWithRetryCount(std::int64_t retryCount)
{
    return store_->isTrue(
        {"look for retried bundles", "SELECT EXISTS (SELECT 1 FROM queue WHERE retry_count = ? LIMIT 1)"},
        {retryCount});
}

Result<std::int64_t> APMDatabase::publicEventNameCount()
{
    return numberOf(
        {"count public event names", "SELECT count(1) FROM events WHERE name NOT LIKE '!_%' ESCAPE '!'"});
}

Result<std::int64_t> APMDatabase::publicUserAttributeCount()
{
    return numberOf({"count public user attributes",
                     "SELECT count(1) FROM user_attributes WHERE name NOT LIKE '!_%' ESCAPE '!'"});
}

Result<std::int64_t> APMDatabase::userAttributeCountWithOrigin(std::string_view origin)
{
    return numberOf({"count user attributes", "SELECT count(1) FROM user_attributes WHERE origin = ?"},
                    {origin});
}

} // namespace skyflare
