#include "platform/persistence/RowRegistry.h"

#include "platform/persistence/RowBytes.h"

#include <limits>

namespace skyflare {

RowRegistry::Fetch::Fetch(RowRegistry &registry) : registry_(&registry)
{
    const std::scoped_lock lock(registry.mutex_);
    ++registry.fetches_;
}

RowRegistry::Fetch::~Fetch()
{
    if (!registry_)
        return;
    const std::scoped_lock lock(registry_->mutex_);
    --registry_->fetches_;
    registry_->forgetGoneRows();
}

RowRegistry::Deletion::Deletion(RowRegistry &registry, const EntityTable *table,
                                std::span<const std::int64_t> objectIDs)
    : registry_(registry)
{
    const std::scoped_lock lock(registry_.mutex_);
    ++registry_.deletions_;
    for (const std::int64_t objectID : objectIDs) {
        const RowKey row{table, objectID, 0};
        const RowKey rowEnd{table, objectID, std::numeric_limits<std::size_t>::max()};
        registry_.going_.insert(row);
        const auto end = registry_.held_.upper_bound(rowEnd);
        for (auto each = registry_.held_.lower_bound(row); each != end; ++each) {
            if (auto bytes = each->second.lock())
                held_.push_back(std::move(bytes));
        }
    }
}

RowRegistry::Deletion::~Deletion()
{
    const std::scoped_lock lock(registry_.mutex_);
    --registry_.deletions_;
    registry_.forgetGoneRows();
}

void RowRegistry::forgetGoneRows()
{
    if (fetches_ == 0 && deletions_ == 0)
        going_.clear();
}

RowRegistry::Entry RowRegistry::bytesOf(const std::shared_ptr<StoreParts> &parts, const RowKey &key,
                                        std::uint64_t size)
{
    const std::scoped_lock lock(mutex_);
    std::weak_ptr<RowBytes> &known = held_[key];
    auto bytes = known.lock();
    if (!bytes)
        known = bytes = std::make_shared<RowBytes>(parts, key, size);
    return {std::move(bytes), going_.contains({key.table, key.objectID, 0})};
}

void RowRegistry::forget(const RowKey &key)
{
    const std::scoped_lock lock(mutex_);
    const auto found = held_.find(key);
    if (found != held_.end() && found->second.expired()) // else a new one has taken its place
        held_.erase(found);
}

} // namespace skyflare
