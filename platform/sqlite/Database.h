#pragma once

#include "platform/sqlite/Statement.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>

struct sqlite3;

namespace skyflare {

void closeDatabase(sqlite3 *database);

enum class OpenMode {
    Write,     ///< made if it is not there; reads only, where the file allows no more
    Query,     ///< reads a file that is there
    Immutable, ///< reads a file on a disk that nobody can write
};

enum class Checkpoint {
    Passive,  ///< moves what it can from the log into the file, in nobody's way
    Truncate, ///< moves all and empties the log; "busy" while somebody still reads from it
};

/// One connection to an SQLite file.
///
/// Threads: any, one at a time. Outlives its statements, blobs and transactions.
class Database {
public:
    /// @param files  SQLite's name of what reads and writes files; empty: the system's own
    static Result<std::unique_ptr<Database>> open(const std::filesystem::path &path, OpenMode mode,
                                                  std::chrono::milliseconds busyTimeout,
                                                  const std::string &files = {});

    /// Runs one or several statements; rows are passed over.
    Result<> execute(const std::string &sql);

    /// A statement that is compiled once and then reused; for a text that comes again. A text that holds none
    /// or more than one is refused.
    Result<Statement> prepare(std::string_view sql);

    /// The first column of the first row; 0 if there is no row or no integer in it.
    Result<std::int64_t> number(std::string_view sql);

    Result<> checkpoint(Checkpoint kind);
    /// Whether closing the file's last connection moves the log into the file; as a rule it does.
    void setCheckpointsOnClose(bool checkpoints);

    /// Whether every byte of the file can be read: SQLite may take a disk that does not answer for damage.
    Result<> readThrough() const;

    [[nodiscard]] bool isReadOnly() const;
    [[nodiscard]] bool isInTransaction() const;
    [[nodiscard]] std::int64_t lastInsertedRow() const;
    /// By the last statement that inserts, updates or deletes.
    [[nodiscard]] std::int64_t changedRows() const;
    /// Whether the file is no longer at the path that it was opened at: moved or deleted.
    [[nodiscard]] bool hasMoved() const;

    /// What the last call that failed says. Domain "SQLite"; userInfo has "path" and "extendedCode".
    [[nodiscard]] Error error() const;
    [[nodiscard]] sqlite3 *handle() const { return handle_.get(); }

    /// For open(): takes the connection over.
    Database(std::filesystem::path path, sqlite3 *handle) : path_(std::move(path)), handle_(handle) {}

private:
    friend class Statement;

    std::filesystem::path path_;
    Handle<sqlite3, &closeDatabase> handle_;
    std::map<std::string, StatementHandle, std::less<>> idle_;

    struct Compiled {
        StatementHandle statement; ///< none where the text holds but comments
        std::string_view rest;
    };
    Result<Compiled> compile(std::string_view sql);
    void keep(StatementHandle statement);
};

/// Whether another connection's lock is why something failed.
bool isBusy(const Error &error);

} // namespace skyflare
