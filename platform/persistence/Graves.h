#pragma once

#include "platform/persistence/EntityTable.h"
#include "platform/persistence/RowBlob.h"

#include <string>
#include <vector>

namespace skyflare {

/// A whole table is deleted by renaming it: that takes a moment, whatever it holds. Its rows stay in the
/// renamed table, its grave, until somebody has the time to free them.

///
/// A grave's name ends in the mark of the store that dug it. While that store is in use no other frees the
/// rows, since it alone knows who still holds bytes of them.

/// Puts an empty table in the place of `table`'s. Identities go on from where they were. Within the
/// caller's write transaction.
Result<> bury(Database &database, const EntityTable &table, const std::string &mark);

/// The graves of all tables, by name.
Result<std::vector<std::string>> graves(Database &database);

/// Whether a grave of that name is one of `table`'s.
bool isGraveOf(const EntityTable &table, const std::string &grave);

/// Whether the store of that mark dug the grave.
bool isMarked(const std::string &grave, const std::string &mark);

/// A row's bytes, wherever the row is by now: its table, or one of its graves.
Result<RowBlob> openRow(Database &database, const EntityTable &table, const std::string &column,
                        std::int64_t row);

} // namespace skyflare
