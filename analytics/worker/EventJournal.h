#pragma once

#include "analytics/proto/APMMetadata.h"
#include "analytics/worker/DatabaseKeeper.h"
#include "analytics/worker/EventAggregatesCache.h"

#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

namespace skyflare {

/// How long a transaction may take in what is waiting.
inline constexpr std::chrono::milliseconds longestTransaction{50};

/// What the worker reads and writes: events with all that is written along with them, many to a transaction,
/// and in memory what is asked for at every event.
///
/// begin() opens a transaction unless one is open; commitIfDue() ends it once it is 50 ms old, commit() at
/// once. The aggregates of the names and the day's counts are written at its end, once for all of its events,
/// and so is what the ledger has counted. An event counts as stored when its transaction has been committed,
/// as failed when that or its own row failed. After a transaction that failed, what is in memory is read
/// anew.
///
/// Threads: the engine's worker. Borrows its Services.
class EventJournal {
public:
    struct Services {
        DatabaseKeeper &databases;
        APMMonitor &monitor;
        const Clock &clock;
        EventLedger &ledger;
    };

    explicit EventJournal(const Services &services) : services_(services) {}

    /// What every later event's metadata says of the program.
    void setAppData(APMAppData app);

    /// An error: there is no database now, or it takes nothing. The monitor has heard why. One that did not
    /// let a transaction begin is left alone for a second, as each try may wait for another program's lock.
    Result<> begin();
    void commitIfDue();
    void commit();
    /// Commits, and closes the database.
    void close();

    // Between begin(), when that succeeded, and the commit that follows.

    /// Changed in place; written with the transaction.
    APMDailyCounts &dailyCounts() { return known_->dailyCounts; }
    /// Whether there was an event of this stored name before.
    Result<bool> knowsEventName(std::string_view name);
    [[nodiscard]] std::int64_t publicEventNameCount() const { return known_->events.publicNames(); }

    // writeEvent:isPublicEvent:isRealtime:
    /// The event with its metadata, aggregates and counts; its previousTimestamp is filled in. Counts in the
    /// ledger what becomes of it: where begin() had failed, too.
    void writeEvent(APMEvent event, IsRealtime isRealtime);

    /// By name.
    [[nodiscard]] const std::vector<APMUserAttribute> &userAttributes() const
    {
        return known_->userAttributes;
    }
    Result<> updateUserAttribute(const APMUserAttribute &attribute);
    Result<> deleteUserAttributeWithName(std::string_view name);

    // A transaction of its own each: one that is open is committed first.

    /// What a change works on.
    struct Changing {
        APMDatabase &database;
        EventAggregatesCache &events;
        std::int64_t day;    ///< as the day's counts have it
        EventTally &counted; ///< for the ledger, if the change holds
    };
    using Change = std::function<Result<>(const Changing &)>;
    /// Holds as a whole, with what the ledger counts, or not at all.
    Result<> change(const Change &change);

    Result<> deleteStaleDataIfDue();
    /// Everything but the ledger's counts.
    Result<> reset();

private:
    /// What one opened database holds.
    struct Known {
        std::uint64_t opening = 0;
        APMDailyCounts dailyCounts;
        APMDailyCounts storedCounts;
        std::vector<APMUserAttribute> userAttributes;
        EventAggregatesCache events{0};
    };
    using Removal = std::function<Result<>(APMDatabase &, const APMDatabase::AlongWith &)>;
    struct RemovalEntries {
        LedgerEntry raw;
        LedgerEntry inBundles;
    };

    Services services_;
    APMAppData app_;
    std::optional<Known> known_;
    std::optional<RawEventMetadata> metadata_; ///< nothing: to be made anew

    // The open transaction's.
    APMDatabase *database_ = nullptr; ///< null: there is none
    double begunAt_ = 0;              ///< seconds of uptime
    EventTally uncommitted_;
    bool isMetadataStored_ = false;
    std::optional<Error> damage_;

    double nextBegin_ = 0; ///< seconds of uptime

    [[nodiscard]] bool isLost() const { return damage_ || database_->isTransactionGivenUp(); }
    Result<> beginOn(APMDatabase &database);
    Result<> load(APMDatabase &database);
    void writeAlong();
    Result<> noting(Result<> done);
    Result<> store(APMEvent &event, IsRealtime isRealtime);
    Result<std::int64_t> storeMetadata();
    std::vector<APMUserAttribute>::iterator placeOf(std::string_view name);
    Result<> removeRows(const RemovalEntries &entries, const Removal &removal);
    Result<> end();
};

} // namespace skyflare
