#pragma once

#include "analytics/store/APMSqliteStore.h"

namespace skyflare {

/// The table "database_identity": by what whoever collects bundles tells this database from one that was made
/// before it, or after it. A reset wipes it.
///
/// Threads: its store's, which must outlive it.
class IdentityTable {
public:
    explicit IdentityTable(APMSqliteStore &store) : store_(store) {}

    /// Nothing: it has none yet.
    Result<std::optional<std::string>> identity();
    Result<> set(std::string_view identity);

private:
    APMSqliteStore &store_;
};

} // namespace skyflare
