#pragma once

#include "platform/sqlite/Database.h"

#include <span>

struct sqlite3_blob;

namespace skyflare {

void closeBlob(sqlite3_blob *blob);

/// A binary column of one row, read piece by piece without loading the rest.
///
/// Threads: that of its database's user. Its database must outlive it; while it lives, its connection
/// sees the moment at which it was opened.
class RowBlob {
public:
    static Result<RowBlob> open(Database &database, const std::string &table, const std::string &column,
                                std::int64_t row);

    [[nodiscard]] std::uint64_t size() const;
    Result<> read(std::uint64_t offset, std::span<std::uint8_t> into) const;

private:
    const Database *database_;
    Handle<sqlite3_blob, &closeBlob> handle_;

    RowBlob(const Database &database, sqlite3_blob *handle) : database_(&database), handle_(handle) {}
};

} // namespace skyflare
