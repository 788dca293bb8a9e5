#include "platform/sqlite/Database.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <utility>

namespace skyflare {

namespace {

constexpr std::size_t idleStatementLimit = 32;

/// The path as a URI that says that the file cannot change.
std::string immutableUri(const std::filesystem::path &path)
{
    constexpr std::string_view hexadecimal = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char each : std::filesystem::absolute(path).string()) {
        if (each != '?' && each != '#' && each != '%') {
            uri += each;
            continue;
        }
        uri += '%';
        uri += hexadecimal[static_cast<unsigned char>(each) / 16];
        uri += hexadecimal[static_cast<unsigned char>(each) % 16];
    }
    return uri + "?immutable=1";
}

int flagsOf(OpenMode mode)
{
    switch (mode) {
    case OpenMode::Write:
        return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    case OpenMode::Query: // to read from a log is to write into its index
        return SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    case OpenMode::Immutable:
        return SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;
    }
    return 0;
}

} // namespace

void closeDatabase(sqlite3 *database)
{
    sqlite3_close_v2(database);
}

Result<std::unique_ptr<Database>> Database::open(const std::filesystem::path &path, OpenMode mode,
                                                 std::chrono::milliseconds busyTimeout,
                                                 const std::string &files)
{
    const std::string name = mode == OpenMode::Immutable ? immutableUri(path) : path.string();
    sqlite3 *handle = nullptr;
    const int code =
        sqlite3_open_v2(name.c_str(), &handle, flagsOf(mode), files.empty() ? nullptr : files.c_str());
    auto database = std::make_unique<Database>(path, handle);
    if (code != SQLITE_OK)
        return database->error();
    sqlite3_busy_timeout(handle, static_cast<int>(busyTimeout.count()));
    if (mode == OpenMode::Query) {
        if (const auto done = database->execute("PRAGMA query_only = 1"); !done)
            return done.error();
    }
    return database;
}

Result<> Database::execute(const std::string &sql)
{
    if (sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        return error();
    return {};
}

Result<Statement> Database::prepare(std::string_view sql)
{
    if (const auto found = idle_.find(sql); found != idle_.end()) {
        StatementHandle kept = std::move(found->second);
        idle_.erase(found);
        return Statement(*this, std::move(kept));
    }
    auto first = compile(sql);
    if (!first)
        return first.error();
    for (std::string_view rest = first->rest; !rest.empty();) { // comments and semicolons may follow
        const auto next = compile(rest);
        if (!next || next->statement)
            return Error{"SQLite", SQLITE_MISUSE, "Query contained more than one SQL statement."};
        rest = next->rest;
    }
    if (!first->statement)
        return Error{"SQLite", SQLITE_MISUSE, "Query contained no SQL statement."};
    return Statement(*this, std::move(first->statement));
}

Result<Database::Compiled> Database::compile(std::string_view sql)
{
    sqlite3_stmt *statement = nullptr;
    const char *rest = nullptr;
    if (sqlite3_prepare_v3(handle(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                           &statement, &rest) != SQLITE_OK)
        return error();
    return Compiled{StatementHandle(statement), sql.substr(static_cast<std::size_t>(rest - sql.data()))};
}

void Database::keep(StatementHandle statement)
{
    if (idle_.size() >= idleStatementLimit)
        idle_.clear(); // only texts that name deleted tables vary
    std::string sql = sqlite3_sql(statement.get());
    idle_.insert_or_assign(std::move(sql), std::move(statement));
}

Result<std::int64_t> Database::number(std::string_view sql)
{
    auto statement = prepare(sql);
    if (!statement)
        return statement.error();
    const auto row = statement->step();
    if (!row)
        return row.error();
    return *row ? statement->integer(0).value_or(0) : 0;
}

Result<> Database::checkpoint(Checkpoint kind)
{
    const int mode = kind == Checkpoint::Passive ? SQLITE_CHECKPOINT_PASSIVE : SQLITE_CHECKPOINT_TRUNCATE;
    if (sqlite3_wal_checkpoint_v2(handle(), nullptr, mode, nullptr, nullptr) != SQLITE_OK)
        return error();
    return {};
}

void Database::setCheckpointsOnClose(bool checkpoints)
{
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, checkpoints ? 0 : 1, nullptr);
}

Result<> Database::readThrough() const
{
    const auto failed = [this](int code) {
        return Error{"SQLite", code & 0xff, sqlite3_errstr(code), {{"path", path_.string()}}};
    };
    sqlite3_file *file = nullptr;
    const int found = sqlite3_file_control(handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (found != SQLITE_OK || !file || !file->pMethods)
        return failed(found == SQLITE_OK ? SQLITE_CANTOPEN : found);
    sqlite3_int64 size = 0;
    if (const int code = file->pMethods->xFileSize(file, &size); code != SQLITE_OK)
        return failed(code);
    std::array<char, 65536> part{};
    for (sqlite3_int64 offset = 0; offset < size; offset += static_cast<sqlite3_int64>(part.size())) {
        const auto length = std::min(size - offset, static_cast<sqlite3_int64>(part.size()));
        const int code = file->pMethods->xRead(file, part.data(), static_cast<int>(length), offset);
        if (code != SQLITE_OK)
            return failed(code);
    }
    return {};
}

bool Database::isReadOnly() const
{
    return sqlite3_db_readonly(handle(), "main") == 1;
}

bool Database::isInTransaction() const
{
    return sqlite3_get_autocommit(handle()) == 0;
}

std::int64_t Database::lastInsertedRow() const
{
    return sqlite3_last_insert_rowid(handle());
}

std::int64_t Database::changedRows() const
{
    return sqlite3_changes64(handle());
}

bool Database::hasMoved() const
{
    int moved = 0;
    return sqlite3_file_control(handle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved != 0;
}

Error Database::error() const
{
    const std::string extended = std::to_string(sqlite3_extended_errcode(handle()));
    return Error{"SQLite",
                 sqlite3_errcode(handle()) & 0xff,
                 sqlite3_errmsg(handle()),
                 {{"path", path_.string()}, {"extendedCode", extended}}};
}

bool isBusy(const Error &error)
{
    return error.domain == "SQLite" && (error.code == SQLITE_BUSY || error.code == SQLITE_LOCKED);
}

} // namespace skyflare
