#include "analytics/store/IdentityTable.h"

namespace skyflare {

Result<std::optional<std::string>> IdentityTable::identity()
{
    std::optional<std::string> identity;
    const auto asked =
        store_.forEachRow({"query database identity", "SELECT identity FROM database_identity LIMIT 1"}, {},
                          [&identity](const Statement &row) { identity = row.text(0); });
    if (!asked)
        return asked.error();
    return identity;
}

/// Whatever was there goes: it was no identity.
Result<> IdentityTable::set(std::string_view identity)
{
    if (const auto deleted = store_.deleteAllRecordsFromTableWithName("database_identity"); !deleted)
        return deleted;
    return store_.insert({"insert database identity", "INSERT INTO database_identity (identity) VALUES (?)"},
                         {identity});
}

} // namespace skyflare
