#include "analytics/store/LedgerTable.h"

namespace skyflare {

Result<LedgerTable::Counts> LedgerTable::counts()
{
    Counts counts;
    const auto asked = store_.forEachRow(
        {"query ledger", "SELECT entry, count FROM event_ledger"}, {}, [&counts](const Statement &row) {
            counts.insert_or_assign(row.text(0).value_or(""), row.integer(1).value_or(0));
        });
    if (!asked)
        return asked.error();
    return counts;
}

Result<> LedgerTable::update(std::string_view entry, std::int64_t count)
{
    return store_.insert(
        {"update ledger", "INSERT OR REPLACE INTO event_ledger (entry, count) VALUES (?, ?)"},
        {entry, count});
}

} // namespace skyflare
