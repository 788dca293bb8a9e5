#pragma once

#include "analytics/worker/EventJournal.h"
#include "tests/analytics/DatabaseFixture.h"

namespace skyflare {

/// One process's journal on a database of the test's own; make another one for the next process.
struct JournalRun {
    DatabaseFixture &place;
    EventLedger ledger;
    DatabaseKeeper databases{
        {place.monitor, place.time, ledger, [this](const StoreLimits &) { return place.tryOpen(); }}};
    EventJournal journal{{databases, place.monitor, place.time, ledger}};

    explicit JournalRun(DatabaseFixture &fixture) : place(fixture) {}

    void log(const APMEvent &event, IsRealtime isRealtime = IsRealtime::No)
    {
        ledger.count(LedgerEntry::Accepted);
        static_cast<void>(journal.begin());
        journal.writeEvent(event, isRealtime);
    }
    void log(const std::string &name) { log(place.event(name)); }
    [[nodiscard]] std::uint64_t count(LedgerEntry entry) const { return ledger.tally().count(entry); }
    /// The equations, against what another connection sees.
    [[nodiscard]] std::string balance() const
    {
        const auto store = APMSqliteStore::open(place.file, place.monitor, {.mode = OpenMode::Query});
        const auto rows = (*store)->rowCountForTableWithName("raw_events");
        const auto bundled = BundleQueue(**store).eventCount();
        const auto balanced =
            ledger.tally().balance({0, rows.value(), static_cast<std::int64_t>(bundled.value())});
        return balanced ? "balanced" : balanced.error().message;
    }
};

} // namespace skyflare
