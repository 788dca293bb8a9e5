#pragma once

#include "platform/persistence/AttributeValue.h"
#include "platform/persistence/EntityDescription.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

namespace skyflare {

/// One record: as it was read from the store, or as it waits to be saved.
///
/// Threads: any. Borrows its entity, which its container owns.
class ManagedObject {
public:
    /// One that waits to be saved.
    explicit ManagedObject(const EntityDescription &entity);
    /// One that is in the store.
    ManagedObject(const EntityDescription &entity, std::int64_t objectID, std::vector<AttributeValue> values);
    ManagedObject(const ManagedObject &) = delete;
    ManagedObject &operator=(const ManagedObject &) = delete;
    ~ManagedObject() = default;

    [[nodiscard]] const EntityDescription &entity() const { return entity_; }

    /// Only for one that is not saved yet; a value of another type than the attribute's is a programming
    /// error. Nothing (std::monostate) is always allowed.
    void setValue(AttributeValue value, std::string_view forKey);

    [[nodiscard]] AttributeValue valueForKey(std::string_view key) const;

    /// Its row's identity, higher for later ones and never used again; nothing while it has no row.
    [[nodiscard]] std::optional<std::int64_t> objectID() const;

private:
    friend class PersistentStore;

    const EntityDescription &entity_;
    mutable std::mutex mutex_;
    std::vector<AttributeValue> values_;
    std::atomic<std::int64_t> objectID_ = 0; // 0: no row; set before the row is committed

    void setObjectID(std::optional<std::int64_t> objectID) { objectID_ = objectID.value_or(0); }
};

} // namespace skyflare
