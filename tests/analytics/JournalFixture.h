#pragma once

#include "analytics/MeasurementReader.h"
#include "analytics/worker/EventJournal.h"
#include "tests/analytics/DatabaseFixture.h"

namespace skyflare {

/// One process's journal on a database of the test's own; make another one for the next process.
struct JournalRun {
    DatabaseFixture &place;
    EventLedger ledger;
    DatabaseKeeper databases{{place.monitor, place.time, ledger, [this] { return place.tryOpen(); }}};
    EventJournal journal{{databases, place.monitor, place.time, ledger}};

    explicit JournalRun(DatabaseFixture &fixture) : place(fixture) {}

    void log(const std::string &name)
    {
        ledger.count(LedgerEntry::Accepted);
        static_cast<void>(journal.begin());
        journal.writeEvent(place.event(name), IsRealtime::No);
    }
    [[nodiscard]] std::uint64_t count(LedgerEntry entry) const { return ledger.tally().count(entry); }
    /// The equations, against what another connection sees.
    [[nodiscard]] std::string balance() const
    {
        const std::uint64_t rows = std::stoull(place.ask("SELECT '' || count(*) FROM raw_events").at(0));
        const auto balanced = ledger.tally().balance(0, rows);
        return balanced ? "balanced" : balanced.error().message;
    }
};

} // namespace skyflare
