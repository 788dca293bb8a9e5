#include "analytics/store/APMSqliteStore.h"

#include "analytics/store/StoreLog.h"
#include "analytics/store/TableBuilder.h"
#include "platform/base/Text.h"

#include <sqlite3.h>
#include <system_error>

#include <array>
#include <exception>
#include <utility>

namespace skyflare {

namespace {

constexpr std::array<std::string_view, 4> fileEndings{"", "-wal", "-shm", "-journal"};

Error sqliteError(std::string_view operation, const Error &why)
{
    std::string text = "Database operation ";
    text += skyflare::quoted(operation);
    text += " failed with sqlite code " + std::to_string(why.code) + " and error message ";
    text += skyflare::quoted(why.message);
    return Error{why.domain, why.code, std::move(text), why.userInfo};
}

Error givenUp()
{
    return Error{"store", 3, "Transaction failed. It was rolled back before its end."};
}

struct Binder {
    Statement &statement;
    int position = 0;

    Result<> operator()(std::monostate) const { return {}; } // what is not bound is NULL
    Result<> operator()(const auto &held) const { return statement.bind(position, held); }
};

Result<> bind(Statement &statement, const SqliteArguments &arguments)
{
    Binder binder{statement};
    for (const SqliteArgument &argument : arguments) {
        ++binder.position;
        if (const auto bound = std::visit(binder, argument); !bound)
            return bound.error();
    }
    return {};
}

SqliteValue valueOf(const Statement &row, int column)
{
    if (const auto integer = row.integer(column))
        return *integer;
    if (const auto real = row.real(column))
        return *real;
    if (auto text = row.text(column))
        return *std::move(text);
    if (const auto bytes = row.bytes(column))
        return Bytes(bytes->begin(), bytes->end());
    return {};
}

/// The record's columns, each between `before` and `after`, with commas.
std::string columnList(const Record &record, std::string_view after = {})
{
    std::string list;
    for (const auto &[column, value] : record)
        list.append(list.empty() ? "" : ", ").append(column).append(after);
    return list;
}

std::vector<SqliteArgument> argumentsOf(const Record &record)
{
    std::vector<SqliteArgument> arguments;
    for (const auto &[column, value] : record)
        arguments.push_back(argumentOf(value));
    return arguments;
}

} // namespace

APMSqliteStore::APMSqliteStore(std::filesystem::path path, std::unique_ptr<Database> database,
                               APMMonitor &monitor)
    : path_(std::move(path)), database_(std::move(database)), monitor_(monitor)
{
}

Result<std::unique_ptr<APMSqliteStore>> APMSqliteStore::open(const std::filesystem::path &databasePath,
                                                             APMMonitor &monitor, const Options &options)
{
    if (databasePath.empty())
        return storeLog::refusal(monitor, "Received empty database path for open");
    auto database = Database::open(databasePath, options.mode, options.busyTimeout, options.files);
    if (!database) {
        Error error = sqliteError("open", database.error());
        writeLog(monitor, storeLog::sqliteFailure, error.message);
        return error;
    }
    return std::make_unique<APMSqliteStore>(databasePath, *std::move(database), monitor);
}

void APMSqliteStore::close()
{
    transaction_.reset();
    database_ = nullptr;
}

Result<> APMSqliteStore::closeAndDeleteDatabase()
{
    close();
    for (const std::string_view ending : fileEndings) {
        std::error_code failed;
        std::filesystem::remove(path_.string().append(ending), failed);
        if (failed)
            return Error{"file", failed.value(), failed.message(), {{"path", path_.string()}}};
    }
    return {};
}

Result<std::string> APMSqliteStore::integrity()
{
    std::string answer;
    const auto asked =
        forEachRow({"integrity check", "PRAGMA integrity_check"}, {}, [&answer](const Statement &row) {
            answer.append(answer.empty() ? "" : "; ");
            answer += row.text(0).value_or("");
        });
    if (!asked)
        return asked.error();
    return answer;
}

Result<> APMSqliteStore::ensureTableWithName(std::string_view name, const TableInfo &info)
{
    return TableBuilder(*this, name, info).ensure();
}

Result<> APMSqliteStore::validateTableWithName(std::string_view name,
                                               std::span<const ColumnInfo> requiredColumnNames,
                                               std::span<const ColumnInfo> addOnColumns)
{
    return TableBuilder(*this, name, {requiredColumnNames, addOnColumns, {}, {}}).validate();
}

Result<bool> APMSqliteStore::tableExists(std::string_view name)
{
    if (const auto given = checkGiven("table name", name.empty(), "existence check"); !given)
        return given.error();
    bool exists = false;
    const auto asked =
        forEachRow({"table exists", "SELECT name FROM sqlite_master WHERE type='table' AND name=?"}, {name},
                   [&exists](const Statement &) { exists = true; });
    if (!asked)
        return asked.error();
    return exists;
}

Result<std::int64_t> APMSqliteStore::rowCountForTableWithName(std::string_view name)
{
    if (const auto given = checkGiven("table name", name.empty(), "row count"); !given)
        return given.error();
    const auto count = integer({"row count", "SELECT count(1) FROM " + std::string(name)});
    if (!count)
        return count.error();
    return count->value_or(0);
}

Result<> APMSqliteStore::upsertRecord(const Record &record, std::string_view inTableWithName)
{
    if (const auto given = checkGiven("table name", inTableWithName.empty(), "upsert"); !given)
        return given.error();
    if (const auto given = checkGiven("record", record.empty(), "upsert"); !given)
        return given.error();
    std::string places;
    for (std::size_t i = 0; i < record.size(); ++i)
        places += i == 0 ? "?" : ", ?";
    const std::string sql = "INSERT OR REPLACE INTO " + std::string(inTableWithName) + " (" +
                            columnList(record) + ") VALUES (" + places + ")";
    return insert({"upsert record", sql}, argumentsOf(record));
}

Result<> APMSqliteStore::updateRecord(const Record &record, std::string_view inTableWithName,
                                      std::string_view columnName, const SqliteArgument &columnValue)
{
    for (const auto &[what, isEmpty] :
         {std::pair("table name", inTableWithName.empty()), std::pair("record", record.empty()),
          std::pair("column name", columnName.empty())}) {
        if (const auto given = checkGiven(what, isEmpty, "update"); !given)
            return given.error();
    }
    auto arguments = argumentsOf(record);
    arguments.push_back(columnValue);
    const std::string sql = "UPDATE " + std::string(inTableWithName) + " SET " + columnList(record, "=?") +
                            " WHERE " + std::string(columnName) + "=?";
    return run({"update record", sql}, arguments);
}

Result<> APMSqliteStore::increaseColumn(const Increase &increase)
{
    for (const auto &[what, isEmpty] : {std::pair("column name", increase.column.empty()),
                                        std::pair("table name", increase.inTable.empty()),
                                        std::pair("condition", increase.condition.empty())}) {
        if (const auto given = checkGiven(what, isEmpty, "increase"); !given)
            return given.error();
    }
    const std::string column(increase.column);
    const std::string sql = "UPDATE " + std::string(increase.inTable) + " SET " + column + " = " + column +
                            " + " + std::to_string(increase.byValue) + " WHERE " +
                            std::string(increase.condition);
    return run({"increase column", sql}, increase.parameterValues);
}

Result<> APMSqliteStore::deleteRecordFromTableWithName(std::string_view name, std::string_view columnName,
                                                       const SqliteArgument &columnValue)
{
    if (!database_)
        return storeLog::refusal(monitor_, "Delete record failed. Database not open.");
    if (const auto given = checkGiven("column name", columnName.empty(), "deletion"); !given)
        return given.error();
    return deleteRecordsFromTableWithName(name, std::string(columnName) + "=?", {columnValue});
}

Result<> APMSqliteStore::deleteRecordsFromTableWithName(std::string_view name, std::string_view condition,
                                                        const SqliteArguments &parameterValues)
{
    if (const auto given = checkGiven("table name", name.empty(), "deletion"); !given)
        return given.error();
    if (const auto given = checkGiven("condition", condition.empty(), "deletion"); !given)
        return given.error();
    const std::string sql = "DELETE FROM " + std::string(name) + " WHERE " + std::string(condition);
    return run({"delete records", sql}, parameterValues);
}

Result<> APMSqliteStore::deleteAllRecordsFromTableWithName(std::string_view name)
{
    if (const auto given = checkGiven("table name", name.empty(), "deletion"); !given)
        return given.error();
    return run({"delete all records", "DELETE FROM " + std::string(name)});
}

Result<std::vector<Record>> APMSqliteStore::recordsForQuery(std::string_view query,
                                                            const SqliteArguments &parameterValues)
{
    std::vector<Record> records;
    const auto asked =
        forEachRow({"query records", query}, parameterValues, [&records](const Statement &row) {
            Record &record = records.emplace_back();
            for (int column = 0; column < row.columnCount(); ++column)
                record.insert_or_assign(row.columnName(column), valueOf(row, column));
        });
    if (!asked)
        return asked.error();
    return records;
}

template <typename Number>
Result<std::optional<Number>> APMSqliteStore::first(const Operation &operation,
                                                    const SqliteArguments &arguments,
                                                    std::optional<Number> (Statement::*read)(int) const)
{
    auto statement = start(operation, arguments);
    if (!statement)
        return statement.error();
    const auto row = statement->step();
    if (!row)
        return failed(operation.name, row.error());
    return *row ? ((*statement).*read)(0) : std::nullopt;
}

Result<std::optional<double>> APMSqliteStore::numberForQuery(std::string_view query,
                                                             const SqliteArguments &parameterValues)
{
    return first({"query number", query}, parameterValues, &Statement::real);
}

Result<std::optional<std::int64_t>> APMSqliteStore::integer(const Operation &operation,
                                                            const SqliteArguments &arguments)
{
    return first(operation, arguments, &Statement::integer);
}

Result<std::int64_t> APMSqliteStore::execute(const Operation &operation, const SqliteArguments &arguments)
{
    if (const auto run = forEachRow(operation, arguments, [](const Statement &) {}); !run)
        return run.error();
    return database_->changedRows();
}

Result<> APMSqliteStore::run(const Operation &operation, const SqliteArguments &arguments)
{
    return forEachRow(operation, arguments, [](const Statement &) {});
}

Result<> APMSqliteStore::insert(const Operation &operation, const SqliteArguments &arguments)
{
    const auto inserted = execute(operation, arguments);
    if (inserted)
        return {};
    Error error = inserted.error();
    if (error.code == SQLITE_FULL) {
        error.userInfo["operation"] = std::move(error.message);
        error.message = "Failed to insert data type. Table is full";
    }
    return error;
}

Result<> APMSqliteStore::beginTransaction()
{
    if (!database_)
        return storeLog::refusal(monitor_, "Database not open");
    if (transaction_)
        return storeLog::refusal(monitor_, "Transaction failed. Another one is open.");
    auto begun = Transaction::begin(*database_, Transaction::Kind::Exclusive);
    if (!begun)
        return failed("begin transaction", begun.error());
    transaction_.emplace(*std::move(begun));
    return {};
}

Result<> APMSqliteStore::endTransaction(Result<> done)
{
    if (!transaction_)
        return storeLog::refusal(monitor_,
                                 database_ ? "Transaction failed. None is open." : "Database not open");
    if (done && isTransactionGivenUp())
        done = givenUp();
    if (done) {
        if (const auto committed = transaction_->commit(); !committed)
            done = failed("end transaction", committed.error());
    }
    if (!done) {
        if (const auto rolledBack = transaction_->rollback(); !rolledBack)
            writeLog(monitor_, storeLog::rollbackFailed, rolledBack.error().message);
        writeLog(monitor_, storeLog::transactionFailed, done.error().message);
    }
    transaction_.reset();
    return done;
}

/// Deliberate: what a block throws ends here, so that no transaction stays open.
Result<> APMSqliteStore::performTransactionWithError(const std::function<Result<>()> &block)
{
    if (const auto begun = beginTransaction(); !begun)
        return begun.error();
    try {
        return endTransaction(block());
    } catch (const std::exception &exception) {
        return endTransaction(Error{"store", 2, std::string("Transaction failed: ") + exception.what()});
    }
}

Result<> APMSqliteStore::together(const std::function<Result<>()> &block)
{
    return isInTransaction() ? block() : performTransactionWithError(block);
}

bool APMSqliteStore::isTransactionGivenUp() const
{
    return transaction_ && !database_->isInTransaction();
}

Result<Statement> APMSqliteStore::start(const Operation &operation, const SqliteArguments &arguments)
{
    if (!database_)
        return storeLog::refusal(monitor_, "Database not open");
    if (const auto given = checkGiven("query", operation.sql.empty(), operation.name); !given)
        return given.error();
    if (isTransactionGivenUp())
        return givenUp();
    auto statement = database_->prepare(operation.sql);
    if (!statement && statement.error().code == SQLITE_MISUSE)
        return storeLog::refusal(monitor_, statement.error().message);
    if (!statement)
        return failed(operation.name, statement.error());
    if (const auto bound = bind(*statement, arguments); !bound)
        return failed(operation.name, bound.error());
    return statement;
}

Error APMSqliteStore::failed(std::string_view operation, const Error &why) const
{
    Error error = sqliteError(operation, why);
    writeLog(monitor_, storeLog::sqliteFailure, error.message);
    return error;
}

Result<> APMSqliteStore::checkGiven(std::string_view what, bool isEmpty, std::string_view operation) const
{
    if (!isEmpty)
        return {};
    std::string text = "Received empty ";
    text.append(what).append(" for ").append(operation);
    return storeLog::refusal(monitor_, std::move(text));
}

} // namespace skyflare
