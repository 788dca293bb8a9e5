#include "platform/persistence/StoreFile.h"

#include "platform/sqlite/Transaction.h"

#include <sqlite3.h>
#include <system_error>

#include <string>
#include <thread>

namespace skyflare {

namespace {

// Large pages keep large blobs together; both hold only as long as the file is empty.
constexpr const char *newFileSql = "PRAGMA page_size = 16384; PRAGMA auto_vacuum = INCREMENTAL;";

// The background moves the log into the file; the limits are for when it does not come to it.
// Freed pages need no zeros written over them: that would rewrite every photo to delete it.
constexpr const char *writerSql = "PRAGMA synchronous = FULL; PRAGMA secure_delete = OFF;"
                                  "PRAGMA wal_autocheckpoint = 4096; PRAGMA journal_size_limit = 67108864;";

// Two processes that make the file at the same time may refuse each other, and SQLite does not wait there.
constexpr std::chrono::milliseconds pauseBetweenTries{1};

Error refusal(const std::filesystem::path &file, std::string why)
{
    return Error{"persistence", 1, std::move(why), {{"path", file.string()}}};
}

Result<> makeFolder(const std::filesystem::path &folder)
{
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    if (failed)
        return Error{"folder", failed.value(), failed.message(), {{"path", folder.string()}}};
    return {};
}

bool hasEmptyLog(const std::filesystem::path &file)
{
    std::error_code missing;
    const auto size = std::filesystem::file_size(file.string() + "-wal", missing);
    return missing || size == 0;
}

/// The version of an open file; nobody has written to it yet.
Result<std::int64_t> versionOf(Database &database)
{
    return database.number("PRAGMA user_version");
}

/// Opens the file so that looking at it changes nothing, not even when it is closed again.
Result<StoreFile> openUntouched(const std::filesystem::path &file, std::chrono::milliseconds writerTimeout)
{
    auto database = Database::open(file, OpenMode::Write, writerTimeout);
    if (!database)
        return database.error();
    (*database)->setCheckpointsOnClose(false);
    const auto version = versionOf(**database);
    if (version)
        return StoreFile{*std::move(database), OpenMode::Query};
    // On a disk that nobody can write there is no place for the log's index, so there must be no log.
    if (version.error().code != SQLITE_CANTOPEN || !hasEmptyLog(file))
        return version.error();
    auto immutable = Database::open(file, OpenMode::Immutable, writerTimeout);
    if (!immutable)
        return immutable.error();
    return StoreFile{*std::move(immutable), OpenMode::Immutable};
}

struct Form {
    std::int64_t version = 0;
    std::int64_t objects = 0; ///< tables and indexes
};

/// Both as they are at one moment: another process may be making the tables.
Result<Form> formOf(Database &database)
{
    const auto moment = Transaction::begin(database, Transaction::Kind::Read);
    if (!moment)
        return moment.error();
    const auto version = versionOf(database);
    if (!version)
        return version.error();
    const auto objects = database.number("SELECT count(*) FROM sqlite_schema");
    if (!objects)
        return objects.error();
    return Form{*version, *objects};
}

Result<> makeTables(Database &database, const std::vector<EntityTable> &tables, int version)
{
    if (const auto done = database.execute(newFileSql); !done)
        return done.error();
    auto transaction = Transaction::begin(database, Transaction::Kind::Write);
    if (!transaction)
        return transaction.error();
    const auto present = versionOf(database);
    if (!present)
        return present.error();
    if (*present != 0) // another process was first
        return {};
    std::string sql;
    for (const EntityTable &table : tables)
        sql += table.createSql();
    sql += "PRAGMA user_version = " + std::to_string(version);
    if (const auto done = database.execute(sql); !done)
        return done.error();
    return transaction->commit();
}

/// Makes what is missing in a new file, refuses what is not ours.
Result<> checkForm(const StoreFile &opened, const std::filesystem::path &file,
                   const std::vector<EntityTable> &tables, int version)
{
    Database &database = *opened.writer;
    const auto form = formOf(database);
    if (!form)
        return form.error();
    if (form->version != 0 && form->version != version)
        return refusal(file, "the file has version " + std::to_string(form->version) +
                                 ", this program knows version " + std::to_string(version));
    if (form->version == 0 && form->objects != 0)
        return refusal(file, "the file is another program's database");
    if (form->version == 0) {
        if (const auto made = makeTables(database, tables, version); !made)
            return made.error();
    }
    for (const EntityTable &table : tables) {
        if (const auto usable = database.prepare(table.insertSql()); !usable)
            return usable.error();
    }
    return {};
}

Result<> prepareForWriting(Database &database, std::chrono::milliseconds longestWait)
{
    if (const auto done = database.execute(writerSql); !done)
        return done.error();
    const auto until = std::chrono::steady_clock::now() + longestWait;
    for (;;) {
        auto done = database.execute("PRAGMA journal_mode = WAL");
        if (done || !isBusy(done.error()) || std::chrono::steady_clock::now() >= until)
            return done;
        std::this_thread::sleep_for(pauseBetweenTries);
    }
}

Error withPath(Error error, const std::filesystem::path &file)
{
    error.userInfo.try_emplace("path", file.string());
    return error;
}

} // namespace

Result<StoreFile> openStoreFile(const std::filesystem::path &file, const std::vector<EntityTable> &tables,
                                int version, std::chrono::milliseconds writerTimeout)
{
    if (const auto made = makeFolder(file.parent_path()); !made)
        return made.error();
    auto opened = openUntouched(file, writerTimeout);
    if (!opened)
        return withPath(opened.error(), file);
    if (const auto checked = checkForm(*opened, file, tables, version); !checked)
        return withPath(checked.error(), file);
    if (!opened->writer->isReadOnly()) {
        if (const auto done = prepareForWriting(*opened->writer, writerTimeout); !done)
            return withPath(done.error(), file);
    }
    opened->writer->setCheckpointsOnClose(true);
    return opened;
}

} // namespace skyflare
