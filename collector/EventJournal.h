#pragma once

#include "collector/EventFile.h"
#include "collector/SeenBundles.h"
#include "platform/base/Console.h"
#include "platform/base/OwnerLock.h"
#include "platform/sqlite/Transaction.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace skyflare {

/// Where a collector writes.
struct CollectorPlaces {
    std::filesystem::path output;      ///< the file of events
    std::filesystem::path stateFolder; ///< for what it has seen
};

/// The file of events and the memory of bundles, which agree whatever happens: between begin() and commit()
/// either both take what comes, or neither does.
///
/// Lines go to the file's end and are synced first. Then one transaction of the database takes the bundles
/// and the file's new length. What a killed collector leaves behind that length is cut off at the next start,
/// even where the file has been renamed meanwhile in its folder.
///
/// Threads: one at a time. Borrows the console.
class EventJournal {
public:
    static Result<std::unique_ptr<EventJournal>> open(CollectorPlaces places, Console &console);

    /// For open(): takes over what it holds; recover() comes next.
    EventJournal(CollectorPlaces places, Console &console, OwnerLock lock, EventFile file);
    EventJournal(const EventJournal &) = delete;
    EventJournal &operator=(const EventJournal &) = delete;
    ~EventJournal() = default;

    /// After an error in this or any of the following three all since begin() is undone.
    Result<> begin();
    /// Whether the bundle is new.
    Result<bool> take(const BundleName &name, std::int64_t day);
    /// @param lines  whole ones
    Result<> append(std::string_view lines);
    /// Forgets bundles that nothing has come after since before `oldestDay`, and waits until the disk has
    /// all.
    Result<> commit(std::int64_t oldestDay);

    /// Goes on in the file that stands at the output's path by now; made if there is none. Not within begin()
    /// and commit().
    Result<> reopen();

private:
    /// What the database says of the file.
    struct Mark {
        FileIdentity identity;
        std::int64_t length = 0; ///< of what has been committed
    };

    const CollectorPlaces places_;
    Console &console_;
    OwnerLock lock_;
    EventFile file_;
    Mark mark_;
    std::unique_ptr<Database> database_;
    std::optional<SeenBundles> seen_;
    std::optional<Transaction> transaction_;
    std::int64_t appended_ = 0;
    bool isAstray_ = true; ///< only the database's file knows what was committed

    Result<> openDatabase();
    Result<> recover();
    Result<> adopt(const std::optional<Mark> &committed);
    [[nodiscard]] Result<> cutRotated(const Mark &committed) const;
    [[nodiscard]] std::filesystem::path folder() const;
    Result<std::optional<Mark>> readMark();
    Result<> writeMark(const Mark &mark);
    Result<> matchFile();
    Error undo(const Error &error);
};

} // namespace skyflare
