#include "platform/sqlite/Statement.h"

#include "platform/sqlite/Database.h"

#include <sqlite3.h>

#include <utility>

namespace skyflare {

void finalizeStatement(sqlite3_stmt *statement)
{
    sqlite3_finalize(statement);
}

Statement::Statement(Database &database, StatementHandle handle)
    : database_(&database), handle_(std::move(handle))
{
}

Statement::~Statement()
{
    if (!handle_)
        return;
    sqlite3_reset(handle_.get());
    sqlite3_clear_bindings(handle_.get());
    database_->keep(std::move(handle_));
}

Result<> Statement::checked(int code) const
{
    if (code != SQLITE_OK)
        return database_->error();
    return {};
}

Result<> Statement::bind(int parameter, std::int64_t value)
{
    return checked(sqlite3_bind_int64(handle_.get(), parameter, value));
}

Result<> Statement::bind(int parameter, double value)
{
    return checked(sqlite3_bind_double(handle_.get(), parameter, value));
}

Result<> Statement::bind(int parameter, std::string_view text)
{
    return checked(
        sqlite3_bind_text64(handle_.get(), parameter, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

Result<> Statement::bind(int parameter, std::span<const std::uint8_t> bytes)
{
    if (bytes.empty()) // a null pointer would bind NULL, which is something else
        return checked(sqlite3_bind_zeroblob(handle_.get(), parameter, 0));
    return checked(sqlite3_bind_blob64(handle_.get(), parameter, bytes.data(), bytes.size(), SQLITE_STATIC));
}

Result<bool> Statement::step()
{
    const int code = sqlite3_step(handle_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        return database_->error();
    return code == SQLITE_ROW;
}

std::optional<std::int64_t> Statement::integer(int column) const
{
    if (sqlite3_column_type(handle_.get(), column) != SQLITE_INTEGER)
        return {};
    return sqlite3_column_int64(handle_.get(), column);
}

std::optional<double> Statement::real(int column) const
{
    const int type = sqlite3_column_type(handle_.get(), column);
    if (type != SQLITE_FLOAT && type != SQLITE_INTEGER)
        return {};
    return sqlite3_column_double(handle_.get(), column);
}

std::optional<std::string> Statement::text(int column) const
{
    if (sqlite3_column_type(handle_.get(), column) != SQLITE_TEXT)
        return {};
    const auto *characters = reinterpret_cast<const char *>(sqlite3_column_text(handle_.get(), column));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
    return characters ? std::string(characters, length) : std::string();
}

std::optional<std::span<const std::uint8_t>> Statement::bytes(int column) const
{
    if (sqlite3_column_type(handle_.get(), column) != SQLITE_BLOB)
        return {};
    const auto *bytes = static_cast<const std::uint8_t *>(sqlite3_column_blob(handle_.get(), column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
    return std::span(bytes, bytes ? size : 0);
}

int Statement::columnCount() const
{
    return sqlite3_column_count(handle_.get());
}

std::string Statement::columnName(int column) const
{
    const char *name = sqlite3_column_name(handle_.get(), column);
    return name ? name : "";
}

} // namespace skyflare
