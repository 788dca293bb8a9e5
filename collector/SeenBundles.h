#pragma once

#include "platform/sqlite/Database.h"

#include <cstdint>
#include <string>

namespace skyflare {

/// What names a bundle: its index counts up in one database of one installation.
struct BundleName {
    std::string appInstanceId;
    std::string databaseId;
    std::int64_t index = 0; ///< from 1 on
};

/// Which bundles have been taken already, as ranges of indexes: an installation whose bundles all came is one
/// row.
///
/// Every call is part of the transaction that its caller has begun on the database. A range that nothing was
/// added to for some time is forgotten. Threads: the database's. Borrows the database.
class SeenBundles {
public:
    explicit SeenBundles(Database &database) : database_(database) {}

    /// Makes the table in a database that does not have it.
    Result<> prepare();

    /// @param day  today, in days since 1970
    /// @return whether it is new; false: it had been added before.
    Result<bool> add(const BundleName &name, std::int64_t day);

    /// Forgets what was last added to before that day: a slice at a time, so that nobody waits for long.
    Result<> forgetBefore(std::int64_t day);

private:
    struct Range {
        std::int64_t first = 0;
        std::int64_t last = 0;
        std::int64_t day = 0;
    };

    Database &database_;

    /// The range that begins at or before the index; with last < first: there is none.
    Result<Range> rangeBefore(const BundleName &name);
    /// Takes away the range that begins behind the index. @return where it ended; the index itself: there was
    /// none.
    Result<std::int64_t> takeRangeBehind(const BundleName &name);
    Result<> put(const BundleName &name, const Range &range);
};

} // namespace skyflare
