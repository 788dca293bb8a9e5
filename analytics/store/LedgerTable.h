#pragma once

#include "analytics/store/APMSqliteStore.h"

namespace skyflare {

/// The table "event_ledger": what the engine has counted, by names of its choice. A reset leaves it.
///
/// Threads: its store's, which must outlive it.
class LedgerTable {
public:
    static constexpr std::string_view name = "event_ledger";
    using Counts = std::map<std::string, std::int64_t, std::less<>>;

    explicit LedgerTable(APMSqliteStore &store) : store_(store) {}

    /// What is no number counts as 0.
    Result<Counts> counts();
    Result<> update(std::string_view entry, std::int64_t count);

private:
    APMSqliteStore &store_;
};

} // namespace skyflare
