#include "platform/persistence/ManagedObjectContext.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace skyflare {

namespace {

using Objects = std::vector<std::shared_ptr<ManagedObject>>;

bool contains(const Objects &objects, const std::shared_ptr<ManagedObject> &object)
{
    return std::find(objects.begin(), objects.end(), object) != objects.end();
}

/// Puts the objects that wait, which are newer than all rows, to their places among the rows.
void mergePending(Objects &rows, const Objects &pending, const FetchRequest &request)
{
    const auto firstPending = static_cast<Objects::difference_type>(rows.size());
    rows.insert(rows.end(), pending.begin(), pending.end());
    if (const auto &sort = request.sortDescriptor) {
        const auto isBefore = [&sort](const auto &one, const auto &other) {
            if (sort->key == orderOfInsertion)
                return false;
            return one->valueForKey(sort->key) < other->valueForKey(sort->key);
        };
        // A stable sort in the order of insertion, then turned round as a whole if it descends.
        if (!sort->ascending)
            std::reverse(rows.begin(), rows.begin() + firstPending);
        std::stable_sort(rows.begin(), rows.end(), isBefore);
        if (!sort->ascending)
            std::reverse(rows.begin(), rows.end());
    }
    if (request.fetchLimit > 0 && rows.size() > static_cast<std::size_t>(request.fetchLimit))
        rows.resize(static_cast<std::size_t>(request.fetchLimit));
}

} // namespace

std::shared_ptr<ManagedObject> ManagedObjectContext::insertNewObject(std::string_view entityName)
{
    auto object = std::make_shared<ManagedObject>(store_->table(entityName).entity());
    const std::scoped_lock lock(mutex_);
    inserted_.push_back({object, std::this_thread::get_id()});
    return object;
}

void ManagedObjectContext::deleteObject(std::shared_ptr<ManagedObject> object)
{
    const std::scoped_lock lock(mutex_);
    deleted_.push_back({std::move(object), std::this_thread::get_id()});
}

Objects ManagedObjectContext::insertedObjects() const
{
    const std::scoped_lock lock(mutex_);
    Objects objects;
    for (const Pending &pending : inserted_)
        objects.push_back(pending.object);
    return objects;
}

Objects ManagedObjectContext::pendingFor(const FetchRequest &request) const
{
    if (!request.includesPendingChanges)
        return {};
    const std::scoped_lock lock(mutex_);
    Objects objects;
    for (const auto &[object, owner] : inserted_) {
        const bool isVisible = owner == std::thread::id() || owner == std::this_thread::get_id();
        if (!isVisible || object->entity().name != request.entityName)
            continue;
        if (const auto &predicate = request.predicate;
            !predicate || object->valueForKey(predicate->key) == predicate->value)
            objects.push_back(object);
    }
    return objects;
}

/// Takes out those whose rows the snapshot shows: a save() has got through since they were listed.
Result<> ManagedObjectContext::dropCommitted(Objects &pending, const EntityTable &table,
                                             ReadSnapshot &snapshot)
{
    Objects waiting;
    for (auto &object : pending) {
        if (const auto objectID = object->objectID()) {
            const auto isRow = snapshot.contains(table, *objectID);
            if (!isRow)
                return isRow.error();
            if (*isRow)
                continue;
        }
        waiting.push_back(std::move(object));
    }
    pending = std::move(waiting);
    return {};
}

Result<Objects> ManagedObjectContext::executeFetchRequest(const FetchRequest &request)
{
    const EntityTable &table = store_->table(request.entityName);
    Objects pending = pendingFor(request); // before the snapshot, so that none is missed
    auto snapshot = store_->snapshot();
    if (!snapshot)
        return snapshot.error();
    auto rows = snapshot->fetch(table, request);
    if (!rows || pending.empty())
        return rows;
    if (const auto done = dropCommitted(pending, table, *snapshot); !done)
        return done.error();
    if (!pending.empty())
        mergePending(*rows, pending, request);
    return rows;
}

Result<std::int64_t> ManagedObjectContext::countForFetchRequest(const FetchRequest &request)
{
    const EntityTable &table = store_->table(request.entityName);
    Objects pending = pendingFor(request);
    auto snapshot = store_->snapshot();
    if (!snapshot)
        return snapshot.error();
    const auto rows = snapshot->count(table, request);
    if (!rows)
        return rows.error();
    if (const auto done = dropCommitted(pending, table, *snapshot); !done)
        return done.error();
    const auto total = *rows + static_cast<std::int64_t>(pending.size());
    return request.fetchLimit > 0 ? std::min<std::int64_t>(total, request.fetchLimit) : total;
}

Result<> ManagedObjectContext::executeBatchDelete(std::string_view entityName)
{
    const EntityTable &table = store_->table(entityName);
    auto deleted = [&]() -> Result<> {
        const auto turn = store_->takeTurn();
        if (!turn)
            return turn.error();
        return store_->deleteAll(*turn, table);
    }();
    if (deleted)
        keeper_->wake();
    return deleted;
}

Result<> ManagedObjectContext::save()
{
    const std::thread::id thread = std::this_thread::get_id();
    takeOver(thread);
    if (changesOf(thread).isEmpty())
        return {};
    auto saved = [&]() -> Result<> {
        const auto turn = store_->takeTurn();
        if (!turn)
            return turn.error();
        const StoreChanges changes = changesOf(thread); // again: who had the turn may have saved ours
        if (changes.isEmpty())
            return {};
        auto written = store_->write(*turn, changes);
        if (written)
            settle(changes);
        return written;
    }();
    forgetDeletions(thread);
    if (saved)
        keeper_->wake();
    return saved;
}

void ManagedObjectContext::takeOver(std::thread::id owner)
{
    const std::scoped_lock lock(mutex_);
    for (Pending &pending : inserted_) {
        if (pending.owner == owner)
            pending.owner = {};
    }
}

StoreChanges ManagedObjectContext::changesOf(std::thread::id thread) const
{
    const std::scoped_lock lock(mutex_);
    StoreChanges changes;
    for (const Pending &pending : deleted_) {
        if (pending.owner == thread)
            changes.deleted.push_back(pending.object);
    }
    for (const Pending &pending : inserted_) {
        if (pending.owner == std::thread::id() && !contains(changes.deleted, pending.object))
            changes.inserted.push_back(pending.object);
    }
    return changes;
}

void ManagedObjectContext::settle(const StoreChanges &changes)
{
    const std::scoped_lock lock(mutex_);
    std::erase_if(inserted_, [&changes](const Pending &pending) {
        return contains(changes.inserted, pending.object) || contains(changes.deleted, pending.object);
    });
}

void ManagedObjectContext::forgetDeletions(std::thread::id thread)
{
    const std::scoped_lock lock(mutex_);
    std::erase_if(deleted_, [thread](const Pending &pending) { return pending.owner == thread; });
}

} // namespace skyflare
