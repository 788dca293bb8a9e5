#pragma once

#include "analytics/model/APMMonitor.h"
#include "analytics/store/SqliteValue.h"
#include "analytics/store/TableInfo.h"
#include "platform/sqlite/Transaction.h"

#include <functional>
#include <optional>
#include <type_traits>

namespace skyflare {

/// An SQLite file with tables that grow from version to version, and rows as dictionaries.
///
/// Every failure is logged and answered as an error whose text names the operation, SQLite's code and its
/// message. Table and column names and conditions are the program's own and stand in the SQL as they are;
/// values are bound.
///
/// Threads: one at a time. Owns the connection. Borrows the monitor.
class APMSqliteStore {
public:
    struct Options {
        std::chrono::milliseconds busyTimeout{100}; ///< for another program that looks into the file
        std::string files = {}; ///< SQLite's name of what reads and writes files; empty: the system's own
        OpenMode mode = OpenMode::Write;
    };

    /// For writing, makes the file if it is missing, in a folder that is there. Does not read it: integrity()
    /// does.
    static Result<std::unique_ptr<APMSqliteStore>> open(const std::filesystem::path &databasePath,
                                                        APMMonitor &monitor, const Options &options);

    void close();
    /// The file, its log and what a crash left beside it.
    Result<> closeAndDeleteDatabase();
    /// The answer of an integrity check: "ok", or what is wrong.
    Result<std::string> integrity();

    // ensureTableWithName:elementaryColumnInfo:addOnColumnInfo:modifyColumnInfo:error:
    Result<> ensureTableWithName(std::string_view name, const TableInfo &info);
    /// Whether the table has all that is required and nothing else that a row must have.
    Result<> validateTableWithName(std::string_view name, std::span<const ColumnInfo> requiredColumnNames,
                                   std::span<const ColumnInfo> addOnColumns);
    Result<bool> tableExists(std::string_view name);
    Result<std::int64_t> rowCountForTableWithName(std::string_view name);

    Result<> upsertRecord(const Record &record, std::string_view inTableWithName);
    Result<> updateRecord(const Record &record, std::string_view inTableWithName, std::string_view columnName,
                          const SqliteArgument &columnValue);
    struct Increase {
        std::string_view column;
        std::int64_t byValue = 1;
        std::string_view inTable;
        std::string_view condition;
        SqliteArguments parameterValues;
    };
    Result<> increaseColumn(const Increase &increase);
    Result<> deleteRecordFromTableWithName(std::string_view name, std::string_view columnName,
                                           const SqliteArgument &columnValue);
    Result<> deleteRecordsFromTableWithName(std::string_view name, std::string_view condition,
                                            const SqliteArguments &parameterValues = {});
    Result<> deleteAllRecordsFromTableWithName(std::string_view name);
    Result<std::vector<Record>> recordsForQuery(std::string_view query,
                                                const SqliteArguments &parameterValues = {});
    /// The first column of the first row; nothing where there is no row, or no number in it.
    Result<std::optional<double>> numberForQuery(std::string_view query,
                                                 const SqliteArguments &parameterValues = {});

    /// Opens a transaction. Where SQLite gives it up by itself, as on a full disk, every operation that
    /// follows before its end fails.
    Result<> beginTransaction();
    /// Commits where `done` is no error, else rolls back.
    /// @return `done`, or why nothing was committed
    Result<> endTransaction(Result<> done = {});
    /// Runs the block in a transaction of its own: what it did holds only if it succeeds.
    Result<> performTransactionWithError(const std::function<Result<>()> &block);
    /// The same; but in a transaction that is open the block becomes a part of that one.
    Result<> together(const std::function<Result<>()> &block);
    [[nodiscard]] bool isInTransaction() const { return transaction_.has_value(); }
    /// Whether SQLite has given up the transaction that is open.
    [[nodiscard]] bool isTransactionGivenUp() const;

    // For who knows the tables: statements that are compiled once.

    struct Operation {
        std::string_view name; ///< in error texts
        std::string_view sql;
    };
    /// @return how many rows an insertion, update or deletion has changed
    Result<std::int64_t> execute(const Operation &operation, const SqliteArguments &arguments = {});
    /// For who does not ask how many.
    Result<> run(const Operation &operation, const SqliteArguments &arguments = {});
    enum class Rows { GoOn, Stop };
    /// Calls `row` for every row, until it answers Stop, if it answers.
    template <typename Row>
    Result<> forEachRow(const Operation &operation, const SqliteArguments &arguments, const Row &row)
    {
        auto statement = start(operation, arguments);
        if (!statement)
            return statement.error();
        for (;;) {
            const auto hasRow = statement->step();
            if (!hasRow)
                return failed(operation.name, hasRow.error());
            if (!*hasRow)
                return {};
            if constexpr (std::is_void_v<decltype(row(std::as_const(*statement)))>)
                row(std::as_const(*statement));
            else if (row(std::as_const(*statement)) == Rows::Stop)
                return {};
        }
    }
    /// Whether the first column of the first row is a number other than 0.
    Result<bool> isTrue(const Operation &question, const SqliteArguments &arguments = {})
    {
        const auto answer = integer(question, arguments);
        if (!answer)
            return answer.error();
        return answer->value_or(0) != 0;
    }
    /// The first column of the first row as a whole number, or nothing.
    Result<std::optional<std::int64_t>> integer(const Operation &operation,
                                                const SqliteArguments &arguments = {});
    Result<> insert(const Operation &operation, const SqliteArguments &arguments);

    [[nodiscard]] APMMonitor &monitor() const { return monitor_; }
    [[nodiscard]] Database *database() const { return database_.get(); } ///< null when it is closed

    /// For open(): takes the connection over.
    APMSqliteStore(std::filesystem::path path, std::unique_ptr<Database> database, APMMonitor &monitor);

private:
    const std::filesystem::path path_;
    std::unique_ptr<Database> database_;
    APMMonitor &monitor_;
    std::optional<Transaction> transaction_; // goes before the connection

    [[nodiscard]] Result<Statement> start(const Operation &operation, const SqliteArguments &arguments);
    [[nodiscard]] Error failed(std::string_view operation, const Error &why) const;
    [[nodiscard]] Result<> checkGiven(std::string_view what, bool isEmpty, std::string_view operation) const;
    template <typename Number>
    Result<std::optional<Number>> first(const Operation &operation, const SqliteArguments &arguments,
                                        std::optional<Number> (Statement::*read)(int) const);
};

} // namespace skyflare
