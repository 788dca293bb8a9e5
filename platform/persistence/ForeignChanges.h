#pragma once

#include "platform/persistence/EntityTable.h"
#include "platform/sqlite/Database.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// Notices that other processes have put objects into a store or taken some out.
///
/// SQLite tells a connection that others have committed, but those may be this process's own connections that
/// only tidy up; so it is the objects that are compared, their number and the highest identity. Own changes
/// are taken for known. Threads: that of the writing connection's user.
class ForeignChanges {
public:
    explicit ForeignChanges(const std::vector<EntityTable> &tables) : tables_(tables) {}

    /// As it is now, nothing is new. When the store is opened.
    Result<> begin(Database &writer);

    /// Looks for what others have done. In a transaction that writes, before its own changes.
    Result<> look(Database &writer);
    /// In that transaction, after them.
    Result<> didWrite(Database &writer);

    /// Whether there was something new since this was last asked.
    Result<bool> take(Database &writer);

private:
    using Objects = std::vector<std::int64_t>;

    const std::vector<EntityTable> &tables_;
    std::int64_t version_ = 0; ///< SQLite's count of others' commits
    Objects known_;
    bool isNew_ = false;

    Result<Objects> objectsIn(Database &writer) const;
};

} // namespace skyflare
