#include "platform/persistence/RowBlob.h"

#include <sqlite3.h>

namespace skyflare {

void closeBlob(sqlite3_blob *blob)
{
    sqlite3_blob_close(blob);
}

Result<RowBlob> RowBlob::open(Database &database, const std::string &table, const std::string &column,
                              std::int64_t row)
{
    sqlite3_blob *handle = nullptr;
    if (sqlite3_blob_open(database.handle(), "main", table.c_str(), column.c_str(), row, 0, &handle) !=
        SQLITE_OK)
        return database.error();
    return RowBlob(database, handle);
}

std::uint64_t RowBlob::size() const
{
    return static_cast<std::uint64_t>(sqlite3_blob_bytes(handle_.get()));
}

Result<> RowBlob::read(std::uint64_t offset, std::span<std::uint8_t> into) const
{
    if (offset > size() || into.size() > size() - offset)
        return Error{"bytes", 0, "read past the end of " + std::to_string(size()) + " bytes"};
    if (sqlite3_blob_read(handle_.get(), into.data(), static_cast<int>(into.size()),
                          static_cast<int>(offset)) != SQLITE_OK)
        return database_->error();
    return {};
}

} // namespace skyflare
