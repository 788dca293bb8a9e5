#pragma once

#include "analytics/pipeline/EventLedger.h"
#include "analytics/store/APMDatabase.h"

#include <optional>

namespace skyflare {

/// Carries the ledger from run to run: the database holds it, and every transaction writes what has changed,
/// as it will be when that is committed.
///
/// Threads: the engine's worker. Borrows ledger and monitor.
class LedgerRecord {
public:
    /// What the table holds.
    [[nodiscard]] static EventTally tallyOf(const LedgerTable::Counts &counts);

    LedgerRecord(EventLedger &ledger, APMMonitor &monitor) : ledger_(ledger), monitor_(monitor) {}

    /// For a database that has just been opened. What it holds of an earlier run is added to the ledger, once
    /// in a process; events that were under way then were in a process that was killed. Then rows that nobody
    /// has counted are found, and rows that are missing are lost; and so are events in bundles.
    Result<> takeOver(APMDatabase &database);

    /// For the end of a transaction. @param uncommitted  what is counted when it has been committed
    Result<> write(APMDatabase &database, const EventTally &uncommitted);
    /// After the transaction in which write() was called, if it was. Counts nothing.
    void didCommit();

    [[nodiscard]] bool isUpToDate() const { return ledger_.tally() == written_; }

private:
    EventLedger &ledger_;
    APMMonitor &monitor_;
    bool hasEarlierRun_ = false;
    EventTally written_; ///< as the database has it
    std::optional<EventTally> writing_;

    struct FoundOrLost {
        LedgerEntry found;
        LedgerEntry lost;
    };

    void addEarlierRun(const EventTally &kept);
    /// @param uncounted  how many more there are than have been counted
    void countUncounted(std::int64_t uncounted, const FoundOrLost &entries);
};

} // namespace skyflare
