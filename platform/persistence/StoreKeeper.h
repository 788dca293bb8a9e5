#pragma once

#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/persistence/PersistentStore.h"

#include <memory>
#include <mutex>

namespace skyflare {

/// Keeps a store's file small: frees the rows of deleted tables, gives free pages back to the disk, and
/// moves the log into the file, in pieces so short that no writer waits long for one.
///
/// What a crash leaves undone is done some seconds after the next load: should the process that left it
/// live after all, it has then finished.
///
/// Threads: wake() and stop() on any; the pieces run on the queue, one at a time.
/// Borrows queue and console until stop() returns.
class StoreKeeper : public std::enable_shared_from_this<StoreKeeper> {
public:
    StoreKeeper(std::shared_ptr<PersistentStore> store, DispatchQueue &queue, Console &console)
        : store_(std::move(store)), queue_(queue), console_(console)
    {
    }

    /// There may be something to do.
    void wake();

    /// Waits for the piece that runs, if one does; none runs afterwards.
    void stop();

private:
    enum class Outcome { More, Done };

    std::mutex wakeMutex_;
    bool scheduled_ = false; // under wakeMutex_, as the next one
    bool wokenMeanwhile_ = false;

    std::mutex workMutex_; // held while a piece runs; all below is under it
    std::shared_ptr<PersistentStore> store_;
    DispatchQueue &queue_;
    Console &console_;
    std::unique_ptr<Database> database_; // synced at checkpoints alone: what it does may be done again
    std::vector<std::string> leftovers_; // graves that others had left when the work began
    bool freesLeftovers_ = false;
    bool givesPagesBack_ = false;
    bool hasFreedPages_ = false;
    int busyTimes_ = 0; // in a row

    void schedule(std::chrono::milliseconds delay);
    void scheduleLeftovers();
    void runPiece();
    void finish();
    void handleFailure(const Error &error);
    Result<Outcome> doPiece();
    Result<> openDatabase();
    Result<std::vector<std::string>> gravesToFree();
    Result<> freePiece();
    Result<> freeRows(const std::string &grave);
};

} // namespace skyflare
