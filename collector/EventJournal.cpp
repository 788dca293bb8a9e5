#include "collector/EventJournal.h"

#include "platform/base/Files.h"

#include <system_error>

#include <chrono>
#include <utility>

namespace skyflare {

namespace fs = std::filesystem;

namespace {

constexpr auto databaseName = "seen.sqlite";
constexpr std::chrono::seconds busyTimeout{5};
constexpr std::int64_t databaseVersion = 1;

constexpr auto setUpSql = "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL";
constexpr auto outputSql = "CREATE TABLE IF NOT EXISTS output (id INTEGER PRIMARY KEY CHECK (id = 1), "
                           "inode INTEGER NOT NULL, born INTEGER NOT NULL, length INTEGER NOT NULL);"
                           "PRAGMA user_version = 1";
constexpr std::string_view readMarkSql = "SELECT inode, born, length FROM output";
constexpr std::string_view writeMarkSql =
    "INSERT OR REPLACE INTO output (id, inode, born, length) VALUES (1, ?, ?, ?)";

/// Whether a commit that failed cannot have come to the disk all the same: its last page was not written. A
/// sync that fails says nothing of what is there.
bool isSurelyUndone(const Error &error)
{
    constexpr int full = 13;
    constexpr std::string_view writeFailed = "778";
    const auto extended = error.userInfo.find("extendedCode");
    return error.code == full || (extended != error.userInfo.end() && extended->second == writeFailed);
}

} // namespace

Result<std::unique_ptr<EventJournal>> EventJournal::open(CollectorPlaces places, Console &console)
{
    std::error_code failure;
    fs::create_directories(places.stateFolder, failure);
    if (failure)
        return fileError("cannot make the folder", places.stateFolder, failure.value());
    auto lock = OwnerLock::acquire(places.stateFolder / databaseName);
    if (!lock)
        return lock.error();
    auto file = EventFile::open(places.output);
    if (!file)
        return file.error();
    auto journal =
        std::make_unique<EventJournal>(std::move(places), console, *std::move(lock), *std::move(file));
    if (const auto recovered = journal->recover(); !recovered)
        return recovered.error();
    return journal;
}

EventJournal::EventJournal(CollectorPlaces places, Console &console, OwnerLock lock, EventFile file)
    : places_(std::move(places)), console_(console), lock_(std::move(lock)), file_(std::move(file))
{
}

Result<> EventJournal::openDatabase()
{
    transaction_.reset();
    seen_.reset();
    database_.reset();
    auto opened = Database::open(places_.stateFolder / databaseName, OpenMode::Write, busyTimeout);
    if (!opened)
        return opened.error();
    database_ = *std::move(opened);
    if (const auto done = database_->execute(setUpSql); !done)
        return done.error();
    const auto version = database_->number("PRAGMA user_version");
    if (!version)
        return version.error();
    if (*version > databaseVersion)
        return Error{"collector", 1,
                     "a newer collector has written " + (places_.stateFolder / databaseName).string()};
    seen_.emplace(*database_);
    if (const auto prepared = seen_->prepare(); !prepared)
        return prepared.error();
    return database_->execute(outputSql);
}

/// Brings the file to what the database has committed.
Result<> EventJournal::recover()
{
    if (const auto opened = openDatabase(); !opened)
        return opened.error();
    const auto committed = readMark();
    if (!committed)
        return committed.error();
    if (const auto adopted = adopt(*committed); !adopted)
        return adopted.error();
    isAstray_ = false;
    return {};
}

Result<> EventJournal::adopt(const std::optional<Mark> &committed)
{
    const auto identity = file_.identity();
    if (!identity)
        return identity.error();
    if (committed && committed->identity == *identity) {
        mark_ = *committed;
        return matchFile();
    }
    if (committed) {
        if (const auto cut = cutRotated(*committed); !cut)
            return cut.error();
    }
    if (const auto ended = file_.endLine(); !ended)
        return ended.error();
    const auto size = file_.size();
    if (!size)
        return size.error();
    mark_ = {*identity, *size};
    return writeMark(mark_);
}

/// The file that was written to has been renamed: it too ends with what was committed. One that is gone is
/// gone.
Result<> EventJournal::cutRotated(const Mark &committed) const
{
    const fs::path rotated = EventFile::find(folder(), committed.identity);
    if (rotated.empty())
        return {};
    std::error_code failure;
    const auto length = static_cast<std::uintmax_t>(committed.length);
    if (fs::file_size(rotated, failure) > length && !failure)
        fs::resize_file(rotated, length, failure);
    if (failure)
        return fileError("cannot shorten", rotated, failure.value());
    return {};
}

fs::path EventJournal::folder() const
{
    return places_.output.has_parent_path() ? places_.output.parent_path() : fs::path(".");
}

/// Cuts off what was not committed. A file that is shorter has been emptied by somebody: it goes on from
/// there.
Result<> EventJournal::matchFile()
{
    const auto size = file_.size();
    if (!size)
        return size.error();
    if (*size > mark_.length)
        return file_.cutTo(mark_.length);
    if (*size == mark_.length)
        return {};
    console_.reportLine("skyflare-collector: " + places_.output.string() + " has been shortened from " +
                        std::to_string(mark_.length) + " to " + std::to_string(*size) + " bytes");
    mark_.length = *size;
    return writeMark(mark_); // before anything is added: it has to be told from what is there
}

Result<std::optional<EventJournal::Mark>> EventJournal::readMark()
{
    auto statement = database_->prepare(readMarkSql);
    if (!statement)
        return statement.error();
    const auto row = statement->step();
    if (!row)
        return row.error();
    std::optional<Mark> mark;
    if (*row)
        mark = Mark{{statement->integer(0).value_or(0), statement->integer(1).value_or(0)},
                    statement->integer(2).value_or(0)};
    return mark;
}

Result<> EventJournal::writeMark(const Mark &mark)
{
    auto statement = database_->prepare(writeMarkSql);
    if (!statement)
        return statement.error();
    int parameter = 0;
    for (const std::int64_t value : {mark.identity.inode, mark.identity.born, mark.length}) {
        if (const auto bound = statement->bind(++parameter, value); !bound)
            return bound.error();
    }
    const auto done = statement->step();
    return done ? Result<>() : done.error();
}

Result<> EventJournal::begin()
{
    if (isAstray_) {
        if (const auto recovered = recover(); !recovered)
            return recovered.error();
    }
    // What is written to a file without a name would be lost.
    if (const auto matched = file_.isDeleted() ? reopen() : matchFile(); !matched)
        return matched.error();
    appended_ = 0;
    auto begun = Transaction::begin(*database_, Transaction::Kind::Write);
    if (!begun)
        return begun.error();
    transaction_.emplace(*std::move(begun));
    return {};
}

Result<bool> EventJournal::take(const BundleName &name, std::int64_t day)
{
    auto isNew = seen_->add(name, day);
    return isNew ? isNew : undo(isNew.error());
}

Result<> EventJournal::append(std::string_view lines)
{
    appended_ += static_cast<std::int64_t>(lines.size());
    const auto written = file_.append(lines);
    return written ? written : undo(written.error());
}

Result<> EventJournal::commit(std::int64_t oldestDay)
{
    const Mark after{mark_.identity, mark_.length + appended_};
    if (appended_ > 0) { // otherwise there may be nothing that the database would have to sync
        if (const auto synced = file_.sync(); !synced)
            return undo(synced.error());
        if (const auto marked = writeMark(after); !marked)
            return undo(marked.error());
    }
    if (const auto forgotten = seen_->forgetBefore(oldestDay); !forgotten)
        return undo(forgotten.error());
    if (const auto committed = transaction_->commit(); !committed) {
        isAstray_ = !isSurelyUndone(committed.error());
        return undo(committed.error());
    }
    transaction_.reset();
    mark_ = after;
    return {};
}

/// @return the error
Error EventJournal::undo(const Error &error)
{
    transaction_.reset();
    const auto undone = isAstray_ ? recover() : file_.cutTo(mark_.length);
    isAstray_ = !undone;
    return error;
}

Result<> EventJournal::reopen()
{
    if (isAstray_) {
        if (const auto recovered = recover(); !recovered)
            return recovered.error();
    }
    if (EventFile::identityAt(places_.output) == mark_.identity)
        return {};
    auto file = EventFile::open(places_.output);
    if (!file)
        return file.error();
    // Deliberate: the database knows of the new file before anything is written to it.
    std::swap(file_, *file);
    if (const auto adopted = adopt(mark_); !adopted) {
        std::swap(file_, *file);
        isAstray_ = true;
        return adopted.error();
    }
    return {};
}

} // namespace skyflare
