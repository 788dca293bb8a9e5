#include "platform/persistence/StoreKeeper.h"

#include "platform/persistence/Graves.h"

#include <algorithm>
#include <limits>

namespace skyflare {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds busyTimeout{50};
constexpr milliseconds pauseBetweenPieces{4}; // for the writers that wait
constexpr milliseconds pauseWhenBusy{200};
constexpr milliseconds leftoversDelay{5000};
constexpr int busyTimesLimit = 100; // then the next wake() tries again
constexpr std::int64_t pieceBytes = 16 << 20;
constexpr std::int64_t incrementalVacuum = 2; // as the pragma auto_vacuum numbers it
constexpr int pieceRows = 512;
// A piece's pages fit into memory: spilled before the commit, pages that it cuts off would go to the log.
constexpr const char *keeperSql = "PRAGMA synchronous = NORMAL; PRAGMA secure_delete = OFF;"
                                  "PRAGMA wal_autocheckpoint = 4096; PRAGMA cache_size = -16384;"
                                  "PRAGMA cache_spill = OFF;";
constexpr const char *pieceVacuumSql = "PRAGMA incremental_vacuum(1024)";

} // namespace

void StoreKeeper::wake()
{
    {
        const std::scoped_lock lock(wakeMutex_);
        wokenMeanwhile_ = scheduled_;
        if (std::exchange(scheduled_, true))
            return;
    }
    schedule(milliseconds{0});
}

void StoreKeeper::stop()
{
    const std::scoped_lock lock(workMutex_);
    database_.reset();
    store_.reset();
}

void StoreKeeper::schedule(milliseconds delay)
{
    auto piece = [weak = weak_from_this()] {
        if (const auto keeper = weak.lock())
            keeper->runPiece();
    };
    if (delay.count() == 0)
        queue_.async(std::move(piece));
    else
        queue_.asyncAfter(delay, std::move(piece));
}

void StoreKeeper::scheduleLeftovers()
{
    queue_.asyncAfter(leftoversDelay, [weak = weak_from_this()] {
        const auto keeper = weak.lock();
        if (!keeper)
            return;
        {
            const std::scoped_lock lock(keeper->workMutex_);
            keeper->freesLeftovers_ = true;
            if (!keeper->store_)
                return;
        }
        keeper->wake();
    });
}

void StoreKeeper::runPiece()
{
    const std::scoped_lock lock(workMutex_);
    if (!store_) // stopped
        return;
    const auto outcome = doPiece();
    if (!outcome) {
        handleFailure(outcome.error());
        return;
    }
    busyTimes_ = 0;
    if (*outcome == Outcome::More)
        schedule(pauseBetweenPieces);
    else
        finish();
}

void StoreKeeper::finish()
{
    {
        const std::scoped_lock lock(wakeMutex_);
        scheduled_ = std::exchange(wokenMeanwhile_, false);
        if (!scheduled_)
            return;
    }
    schedule(milliseconds{0});
}

void StoreKeeper::handleFailure(const Error &error)
{
    if (isBusy(error) && ++busyTimes_ < busyTimesLimit) {
        schedule(pauseWhenBusy);
        return;
    }
    busyTimes_ = 0;
    console_.reportLine("Disk space of " + store_->file().string() +
                        " could not be freed yet: " + error.description());
    const std::scoped_lock lock(wakeMutex_);
    scheduled_ = wokenMeanwhile_ = false;
}

Result<> StoreKeeper::openDatabase()
{
    if (database_)
        return {};
    auto opened = Database::open(store_->file(), OpenMode::Write, busyTimeout);
    if (!opened)
        return opened.error();
    if (const auto done = (*opened)->execute(keeperSql); !done)
        return done.error();
    const auto autoVacuum = (*opened)->number("PRAGMA auto_vacuum");
    if (!autoVacuum)
        return autoVacuum.error();
    auto left = graves(**opened);
    if (!left)
        return left.error();
    std::erase_if(*left, [this](const std::string &grave) { return isMarked(grave, store_->mark()); });
    leftovers_ = *std::move(left);
    if (!leftovers_.empty())
        scheduleLeftovers();
    givesPagesBack_ = *autoVacuum == incrementalVacuum;
    database_ = *std::move(opened);
    return {};
}

Result<std::vector<std::string>> StoreKeeper::gravesToFree()
{
    auto all = graves(*database_);
    if (all)
        std::erase_if(*all, [this](const std::string &grave) {
            const bool isLeftover =
                std::find(leftovers_.begin(), leftovers_.end(), grave) != leftovers_.end();
            return !isMarked(grave, store_->mark()) && !(isLeftover && freesLeftovers_);
        });
    return all;
}

Result<StoreKeeper::Outcome> StoreKeeper::doPiece()
{
    if (const auto opened = openDatabase(); !opened)
        return opened.error();
    const auto buried = gravesToFree();
    if (!buried)
        return buried.error();
    const auto freePages = database_->number("PRAGMA freelist_count");
    if (!freePages)
        return freePages.error();
    if (!buried->empty() || (givesPagesBack_ && *freePages > 0)) {
        if (const auto freed = freePiece(); !freed)
            return freed.error();
        hasFreedPages_ = true;
        return Outcome::More;
    }
    if (const auto moved = database_->checkpoint(Checkpoint::Passive); !moved)
        return moved.error();
    if (hasFreedPages_) {
        if (const auto emptied = database_->checkpoint(Checkpoint::Truncate); !emptied)
            return emptied.error();
        static_cast<void>(database_->execute("PRAGMA shrink_memory"));
        hasFreedPages_ = false;
    }
    return Outcome::Done;
}

Result<> StoreKeeper::freePiece()
{
    const auto turn = store_->takeTurn(busyTimeout);
    if (!turn)
        return turn.error();
    auto transaction = Transaction::begin(*database_, Transaction::Kind::Write);
    if (!transaction)
        return transaction.error();
    const auto buried = gravesToFree(); // another process may have been here
    if (!buried)
        return buried.error();
    if (!buried->empty()) {
        if (const auto freed = freeRows(buried->front()); !freed)
            return freed.error();
    }
    if (const auto done = database_->execute(pieceVacuumSql); !done)
        return done.error();
    return transaction->commit();
}

/// Frees a grave's last rows: they are at the file's end, where their pages can simply be cut off.
Result<> StoreKeeper::freeRows(const std::string &grave)
{
    const auto &tables = store_->parts().tables;
    const auto table =
        std::find_if(tables.begin(), tables.end(), [&](const auto &each) { return isGraveOf(each, grave); });
    std::vector<std::int64_t> going;
    std::int64_t bytes = 0;
    {
        auto rows = database_->prepare("SELECT objectID, " +
                                       (table == tables.end() ? "0" : table->lengthSql()) + " FROM " + grave +
                                       " ORDER BY objectID DESC LIMIT " + std::to_string(pieceRows));
        if (!rows)
            return rows.error();
        while (bytes < pieceBytes) {
            const auto row = rows->step();
            if (!row)
                return row.error();
            if (!*row)
                break;
            going.push_back(rows->integer(0).value_or(0));
            bytes += rows->integer(1).value_or(0);
        }
    }
    if (going.empty())
        return database_->execute("DROP TABLE " + grave);
    const RowRegistry::Deletion deletion(store_->parts().registry, table == tables.end() ? nullptr : &*table,
                                         going);
    keepHeldBytes(deletion, *database_);
    return database_->execute("DELETE FROM " + grave + " WHERE objectID >= " + std::to_string(going.back()));
}

} // namespace skyflare
