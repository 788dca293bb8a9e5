#pragma once

#include "platform/persistence/ForeignChanges.h"
#include "platform/persistence/ManagedObject.h"
#include "platform/persistence/ReadSnapshot.h"
#include "platform/persistence/StoreFile.h"
#include "platform/persistence/WriterGate.h"

#include <functional>
#include <memory>
#include <vector>

namespace skyflare {

/// What one transaction does.
struct StoreChanges {
    std::vector<std::shared_ptr<ManagedObject>> inserted;
    std::vector<std::shared_ptr<ManagedObject>> deleted; ///< those without a row are passed over

    [[nodiscard]] bool isEmpty() const { return inserted.empty() && deleted.empty(); }
};

/// The SQLite file behind a container: one connection that writes, as many that read as there are readers.
///
/// Several processes may have the same file open.
///
/// Threads: any. Writing takes a Turn; reading takes nothing and waits for nobody.
class PersistentStore {
public:
    struct Options {
        std::filesystem::path file;
        std::chrono::milliseconds writerTimeout; ///< for the turn, then for other processes
    };

    static Result<std::shared_ptr<PersistentStore>> open(const Options &options,
                                                         const ManagedObjectModel &model);

    /// An entity that the model lacks is a programming error.
    [[nodiscard]] const EntityTable &table(std::string_view entityName) const;
    [[nodiscard]] const std::filesystem::path &file() const { return options_.file; }
    /// Tells this store's deleted tables from those of other processes, and of a process that crashed.
    [[nodiscard]] const std::string &mark() const { return mark_; }
    [[nodiscard]] StoreParts &parts() const { return *parts_; }
    [[nodiscard]] bool isReadOnly() const { return readOnly_; }

    Result<ReadSnapshot> snapshot() const { return ReadSnapshot::begin(parts_); }

    Result<WriterGate::Turn> takeTurn() { return takeTurn(options_.writerTimeout); }
    Result<WriterGate::Turn> takeTurn(std::chrono::milliseconds atMost) { return gate_.take(atMost); }

    /// All of it or nothing. Objects that were inserted have their objectID afterwards, unless it failed.
    Result<> write(const WriterGate::Turn &turn, const StoreChanges &changes);

    /// Deletes every committed object of an entity; the disk space is freed later.
    Result<> deleteAll(const WriterGate::Turn &turn, const EntityTable &table);

    /// Whether other processes have changed the store since this was last asked.
    Result<bool> takeForeignChanges(const WriterGate::Turn &turn);

    /// For open().
    PersistentStore(Options options, std::shared_ptr<StoreParts> parts, std::unique_ptr<Database> writer);

private:
    const Options options_;
    const std::shared_ptr<StoreParts> parts_;
    const std::unique_ptr<Database> writer_; // its user has the turn
    const bool readOnly_;
    const std::string mark_;
    ForeignChanges foreignChanges_; // its user has the turn
    WriterGate gate_;

    Result<> commitWith(const std::function<Result<>()> &changes);
    Result<> writeAll(const StoreChanges &changes);
    Result<> insert(ManagedObject &object);
    Result<> deleteRow(const EntityTable &from, std::int64_t objectID);
};

/// Puts the bytes of rows that are about to go into memory, for those who hold them.
void keepHeldBytes(const RowRegistry::Deletion &deletion, Database &database);

} // namespace skyflare
