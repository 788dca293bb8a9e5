#pragma once

#include "analytics/store/APMPersistedConfig.h"
#include "analytics/store/AppMetadataTable.h"
#include "analytics/store/BundleQueue.h"
#include "analytics/store/EventTable.h"
#include "analytics/store/IdentityTable.h"
#include "analytics/store/LedgerTable.h"
#include "analytics/store/RawEventTable.h"
#include "analytics/store/StoreLimits.h"
#include "analytics/store/UserAttributeTable.h"
#include "platform/base/Clock.h"
#include "platform/base/OwnerLock.h"

namespace skyflare {

inline constexpr std::string_view measurementDatabaseName = "mipeme-app-measurement.sql";

/// The measurement database: events that wait, bundles that wait, and what the engine knows between runs.
///
/// What a call that succeeds has stored outlives the process, however that ends; a power failure may take the
/// last moments with it, never the file. Several calls hold together in a transaction.
///
/// Threads: one at a time: the engine's worker. Owns the file against other processes. Borrows its Services.
class APMDatabase {
public:
    using ExcludeFromBackup = std::function<Result<>(const std::filesystem::path &)>;
    struct Services {
        APMMonitor &monitor;
        const Clock &clock;
        APMPersistedConfig &persistedConfig;
        ExcludeFromBackup excludeFromBackup; ///< none: nothing is done
    };

    /// Makes the file, and folders, that are missing. A file that fails its integrity check, or is no
    /// database, is deleted and made anew; one that is locked, read-only or on a full disk stays as it is,
    /// and is an error.
    // initWithDatabaseName:persistedConfig:error:
    static Result<std::unique_ptr<APMDatabase>> open(const std::filesystem::path &databaseName,
                                                     const Services &services, const StoreLimits &limits,
                                                     const APMSqliteStore::Options &options = {});

    /// Whether an error says that the file is damaged: it has to be opened again, which makes it anew.
    [[nodiscard]] static bool isDamage(const Error &error);

    void setLimits(const StoreLimits &limits) { limits_ = limits; }
    /// After this every call fails with "Database not open".
    void close() { store_->close(); }
    /// Whether the file has been moved or deleted while it was open: what is stored then is seen by nobody.
    [[nodiscard]] bool hasMoved() const;

    // A transaction, as APMSqliteStore has it.

    Result<> beginTransaction() { return store_->beginTransaction(); }
    Result<> endTransaction(Result<> done = {});
    Result<> performTransactionWithError(const std::function<Result<>()> &block);
    [[nodiscard]] bool isInTransaction() const { return store_->isInTransaction(); }
    [[nodiscard]] bool isTransactionGivenUp() const { return store_->isTransactionGivenUp(); }

    // The newest 1000 are kept.

    Result<> insertSubscriptionWithID(std::string_view subscriptionID);
    Result<> insertPurchaseTransactionWithFingerprint(std::string_view fingerprint);

    struct RemovedEvents {
        std::uint64_t raw = 0;
        std::uint64_t inBundles = 0;
        bool isQueueEmpty = false; ///< now
    };
    /// What else a transaction is to do that has removed events.
    using AlongWith = std::function<Result<>(const RemovedEvents &)>;
    /// If the interval has passed since the last time: what is too old, or dated too far ahead, goes.
    Result<> maybeDeleteStaleData(const AlongWith &alongWith = {});
    /// Wipes everything but the ledger, in one transaction, and out of the file.
    Result<> reset(const AlongWith &alongWith = {});

    // Raw events

    Result<> insertIfNotExistsRawEventMetadata(const RawEventMetadata &metadata)
    {
        return rawEvents_.insertMetadataIfNotExists(metadata);
    }
    Result<std::optional<APMMetadata>> rawEventMetadataWithFingerprint(std::int64_t fingerprint)
    {
        return rawEvents_.metadata(fingerprint);
    }
    /// Makes room for one more. insertRawEvent does the same, and does not tell.
    /// @return how many had to go
    Result<std::int64_t> trimRawEvents() { return rawEvents_.trim(limits_.maxStoredEvents); }
    Result<> insertRawEvent(const APMEvent &event, std::int64_t metadataFingerprint, IsRealtime isRealtime)
    {
        return rawEvents_.insert(event, metadataFingerprint, isRealtime, limits_.maxStoredEvents);
    }
    /// Oldest first, until the filter says that it is enough.
    Result<> rawEventsWithMetadataFingerprint(std::int64_t fingerprint, std::int64_t most,
                                              const RawEventTable::EventFilter &eventFilter)
    {
        return rawEvents_.events(fingerprint, most, eventFilter);
    }
    /// Nothing: there is no event.
    Result<std::optional<std::int64_t>> nextMetadataFingerprintToProcess();
    /// Of that metadata alone: between its events there may be others, which have not been bundled yet.
    /// @param newest  the time of the newest of them
    /// @return how many
    Result<std::int64_t> deleteRawEventsWithMaxRowID(std::int64_t maxRowID, std::int64_t metadataFingerprint,
                                                     double newest)
    {
        return rawEvents_.deleteUpTo(maxRowID, metadataFingerprint, newest);
    }
    Result<> deleteUnusedRawEventsMetadata() { return rawEvents_.deleteUnusedMetadata(); }
    /// The same for one, without a look at every event.
    Result<> deleteRawEventMetadataIfUnused(std::int64_t fingerprint)
    {
        return rawEvents_.deleteMetadataIfUnused(fingerprint);
    }
    Result<std::int64_t> rawEventCount() { return rawEvents_.count(); }
    Result<bool> isRawEventsEmpty() { return rawEvents_.isEmpty(); }
    Result<bool> hasRealtimeRawEvents() { return rawEvents_.hasRealtime(); }
    Result<std::optional<double>> latestRawEventTimestamp() { return rawEvents_.newestTimestamp(); }

    // Bundles

    Result<> insertBundle(const FinishedBundle *bundle, IsRealtime isRealtime)
    {
        return bundles_.insert(bundle, isRealtime, services_.clock.secondsSince1970(), limits_.maxQueueTime);
    }
    /// Oldest first, as many as fit; the first one even if it alone does not.
    // queryBundlesWithCountLimit:sizeLimit:error:
    Result<std::vector<QueuedBundle>> queryBundlesWithCountLimit(const BundleQuery &query)
    {
        return bundles_.oldest(query);
    }
    Result<> incrementRetryCounterForBundlesWithIDs(std::span<const std::int64_t> rowIDs)
    {
        return bundles_.incrementRetryCounters(rowIDs);
    }
    /// Those that are still there.
    /// @return how many events were in them
    Result<std::uint64_t> deleteBundlesWithRowIDs(std::span<const BundleMark> bundles)
    {
        return bundles_.remove(bundles);
    }
    /// In all bundles that wait and can be read.
    Result<std::uint64_t> bundledEventCount() { return bundles_.eventCount(); }
    Result<bool> isQueueEmpty() { return bundles_.isEmpty(); }
    Result<bool> hasRealtimeBundles() { return bundles_.hasRealtime(); }
    Result<bool> hasBundlesWithRetryCount(std::int64_t retryCount);
    Result<std::optional<double>> latestBundleEndTimestamp() { return bundles_.newestEndTimestamp(); }
    /// What was committed before this outlives a power failure, too. It waits for the disk.
    Result<> writeThrough();

    // Aggregates and properties

    Result<> updateEventAggregates(const APMEventAggregates &aggregates)
    {
        return events_.update(aggregates);
    }
    Result<std::optional<APMEventAggregates>> eventAggregatesWithName(std::string_view name)
    {
        return events_.withName(name);
    }
    Result<std::vector<APMEventAggregates>> eventAggregates() { return events_.all(); }
    Result<std::int64_t> publicEventNameCount();
    Result<> updateUserAttribute(const APMUserAttribute &attribute) { return attributes_.update(attribute); }
    Result<> deleteUserAttributeWithName(std::string_view name) { return attributes_.deleteWithName(name); }
    Result<std::vector<APMUserAttribute>> userAttributesIncludingInternal(IncludingInternal includingInternal)
    {
        return attributes_.all(includingInternal);
    }
    Result<std::int64_t> publicUserAttributeCount();
    Result<std::int64_t> userAttributeCountWithOrigin(std::string_view origin);

    // The one row of app metadata

    Result<APMAppMetadata> queryAppMetadata() { return appMetadata_.metadata(); }
    Result<> updateAppMetadata(const APMAppMetadata &metadata) { return appMetadata_.update(metadata); }
    Result<APMDailyCounts> dailyCounts() { return appMetadata_.dailyCounts(); }
    Result<> updateDailyCounts(const APMDailyCounts &counts) { return appMetadata_.update(counts); }
    Result<std::optional<APMRemoteConfigRecord>> remoteConfig() { return appMetadata_.remoteConfig(); }
    /// Nothing: forgets it.
    Result<> updateRemoteConfig(const std::optional<APMRemoteConfigRecord> &config)
    {
        return appMetadata_.update(config);
    }

    // By what bundles tell that they are this database's; it is the caller's to make, and a reset wipes it

    Result<std::optional<std::string>> databaseIdentity() { return identity_.identity(); }
    Result<> setDatabaseIdentity(std::string_view identity) { return identity_.set(identity); }

    // The ledger, by the keys of its entries

    Result<LedgerTable::Counts> ledgerCounts() { return ledger_.counts(); }
    Result<> updateLedgerCount(std::string_view entry, std::int64_t count)
    {
        return ledger_.update(entry, count);
    }

    /// For open().
    APMDatabase(OwnerLock lock, std::unique_ptr<APMSqliteStore> store, Services services, StoreLimits limits);

private:
    struct CappedTable;

    OwnerLock lock_; // the last to go
    std::unique_ptr<APMSqliteStore> store_;
    Services services_;
    StoreLimits limits_;
    RawEventTable rawEvents_{*store_};
    BundleQueue bundles_{*store_};
    EventTable events_{*store_};
    UserAttributeTable attributes_{*store_};
    AppMetadataTable appMetadata_{*store_};
    IdentityTable identity_{*store_};
    LedgerTable ledger_{*store_};

    Result<> prepare();
    void ensureAllTables();
    void ensureAllIndexes();
    void forget();
    Result<> insertCapped(const CappedTable &table, std::string_view key);
    Result<> removeEvents(const std::function<Result<RemovedEvents>()> &block, const AlongWith &alongWith);
    Result<RemovedEvents> deleteStaleData(double now);
    Result<RemovedEvents> deleteAll();
    Result<std::int64_t> numberOf(const APMSqliteStore::Operation &question,
                                  const SqliteArguments &arguments = {});
};

} // namespace skyflare
