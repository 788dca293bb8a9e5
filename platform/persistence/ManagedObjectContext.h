#pragma once

#include "platform/persistence/FetchRequest.h"
#include "platform/persistence/ManagedObject.h"
#include "platform/persistence/PersistentStore.h"
#include "platform/persistence/StoreKeeper.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

namespace skyflare {

/// The objects of a container: those in its store, and those that wait to be saved into it.
///
/// Threads: any, several at once. An object belongs to the thread that inserted it until that thread calls
///     save(); until then no other thread saves, fetches or counts it, so that it is never stored half
///     filled. From then on it is the context's, and every thread's save() includes it: if saving fails it
///     stays, counts, is fetched, and goes into the next save(). Deletions are the thread's that asked.
///     Reading waits for no writer. Writers pass one at a time.
class ManagedObjectContext {
public:
    ManagedObjectContext(std::shared_ptr<PersistentStore> store, std::shared_ptr<StoreKeeper> keeper)
        : store_(std::move(store)), keeper_(std::move(keeper))
    {
    }

    /// A new object of the entity, which the model must have; nothing is in it yet.
    std::shared_ptr<ManagedObject> insertNewObject(std::string_view entityName);

    /// Binary values of committed objects are read from their rows when they are asked for.
    Result<std::vector<std::shared_ptr<ManagedObject>>> executeFetchRequest(const FetchRequest &request);
    Result<std::int64_t> countForFetchRequest(const FetchRequest &request);

    /// Deletes the object with this thread's next save(). If that fails the object stays as it was.
    void deleteObject(std::shared_ptr<ManagedObject> object);

    /// Deletes all committed objects of an entity in the store, at once; the disk space comes back later.
    /// Deliberate: objects that wait to be saved are no part of it, and the next save() stores them.
    Result<> executeBatchDelete(std::string_view entityName);

    /// Stores everything that waits, and deletes, in one transaction: all or nothing. Nothing to do is
    /// done without touching the store.
    Result<> save();

    /// All objects that wait to be saved, as it is now.
    [[nodiscard]] std::vector<std::shared_ptr<ManagedObject>> insertedObjects() const;

private:
    struct Pending {
        std::shared_ptr<ManagedObject> object;
        std::thread::id owner; ///< no thread: the context's
    };

    const std::shared_ptr<PersistentStore> store_;
    const std::shared_ptr<StoreKeeper> keeper_;
    mutable std::mutex mutex_; // of the two lists; never held while the store works
    std::vector<Pending> inserted_;
    std::vector<Pending> deleted_;

    void takeOver(std::thread::id owner);
    StoreChanges changesOf(std::thread::id thread) const;
    void settle(const StoreChanges &changes);
    void forgetDeletions(std::thread::id thread);
    [[nodiscard]] std::vector<std::shared_ptr<ManagedObject>> pendingFor(const FetchRequest &request) const;
    static Result<> dropCommitted(std::vector<std::shared_ptr<ManagedObject>> &pending,
                                  const EntityTable &table, ReadSnapshot &snapshot);
};

} // namespace skyflare
