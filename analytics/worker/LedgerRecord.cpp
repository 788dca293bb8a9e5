#include "analytics/worker/LedgerRecord.h"

#include "analytics/worker/MeasurementLog.h"

#include <utility>

namespace skyflare {

namespace {

/// Whether a ledger may have counted that.
bool isSound(const EventTally &tally)
{
    for (std::size_t number = 0; number < EventTally::size; ++number)
        if (static_cast<std::int64_t>(tally[number]) < 0)
            return false;
    const EventTally::Seen kept{tally.underWay(), tally.waitingRows(), tally.bundledEvents()};
    return kept.eventsUnderWay >= 0 && kept.waitingRows >= 0 && kept.bundledEvents >= 0 &&
           tally.balance(kept).has_value();
}

} // namespace

EventTally LedgerRecord::tallyOf(const LedgerTable::Counts &counts)
{
    EventTally tally;
    for (std::size_t number = 0; number < EventTally::size; ++number) {
        const auto found = counts.find(EventTally::key(number));
        tally[number] = found == counts.end() ? 0 : static_cast<std::uint64_t>(found->second);
    }
    return tally;
}

Result<> LedgerRecord::takeOver(APMDatabase &database)
{
    const auto counts = database.ledgerCounts();
    if (!counts)
        return counts.error();
    const auto rows = database.rawEventCount();
    if (!rows)
        return rows.error();
    const auto bundled = database.bundledEventCount();
    if (!bundled)
        return bundled.error();
    written_ = tallyOf(*counts);
    writing_.reset();
    if (!std::exchange(hasEarlierRun_, true))
        addEarlierRun(written_);
    const EventTally tally = ledger_.tally();
    countUncounted(*rows - tally.waitingRows(), {LedgerEntry::Found, LedgerEntry::Lost});
    countUncounted(static_cast<std::int64_t>(*bundled) - tally.bundledEvents(),
                   {LedgerEntry::QueueFound, LedgerEntry::QueueLost});
    return {};
}

void LedgerRecord::countUncounted(std::int64_t uncounted, const FoundOrLost &entries)
{
    if (uncounted > 0)
        ledger_.count(entries.found, static_cast<std::uint64_t>(uncounted));
    if (uncounted < 0) {
        ledger_.count(entries.lost, static_cast<std::uint64_t>(-uncounted));
        writeLog(monitor_, measurementLog::rowsLost, std::to_string(-uncounted));
    }
}

void LedgerRecord::addEarlierRun(const EventTally &kept)
{
    if (!isSound(kept)) {
        writeLog(monitor_, measurementLog::ledgerUnsound);
        return;
    }
    ledger_.add(kept);
    ledger_.count(LedgerEntry::Abandoned, static_cast<std::uint64_t>(kept.underWay()));
}

Result<> LedgerRecord::write(APMDatabase &database, const EventTally &uncommitted)
{
    writing_.reset();
    EventTally tally = ledger_.tally();
    for (std::size_t number = 0; number < EventTally::size; ++number) {
        tally[number] += uncommitted[number];
        if (tally[number] == written_[number])
            continue;
        const auto updated =
            database.updateLedgerCount(EventTally::key(number), static_cast<std::int64_t>(tally[number]));
        if (!updated)
            return updated.error();
    }
    writing_ = tally;
    return {};
}

void LedgerRecord::didCommit()
{
    if (writing_)
        written_ = *writing_;
    writing_.reset();
}

} // namespace skyflare
