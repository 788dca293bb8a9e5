#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

namespace skyflare {

class EntityTable;
class RowBytes;
struct StoreParts;

/// Which binary value of which row.
struct RowKey {
    const EntityTable *table = nullptr;
    std::int64_t objectID = 0;
    std::size_t attribute = 0;

    bool operator<(const RowKey &other) const
    {
        return std::tie(table, objectID, attribute) < std::tie(other.table, other.objectID, other.attribute);
    }
};

/// Knows which rows' bytes somebody still holds, so that they are put into memory before the row goes.
///
/// A fetch sees the store as it was when it began. So a row may be freed after a fetch has seen it and
/// before its bytes are known here; the rows that go are remembered until no such fetch is left.
///
/// Threads: any. No other lock is taken under its own.
class RowRegistry {
public:
    /// Stands for one fetch, from before it sees the store until its bytes are known here.
    class Fetch {
    public:
        explicit Fetch(RowRegistry &registry);
        Fetch(Fetch &&other) noexcept : registry_(std::exchange(other.registry_, nullptr)) {}
        Fetch(const Fetch &) = delete;
        Fetch &operator=(const Fetch &) = delete;
        Fetch &operator=(Fetch &&) = delete;
        ~Fetch();

    private:
        RowRegistry *registry_;
    };

    /// Stands for the deletion of rows, from before their bytes are kept until it is committed.
    class Deletion {
    public:
        Deletion(RowRegistry &registry, const EntityTable *table, std::span<const std::int64_t> objectIDs);
        Deletion(const Deletion &) = delete;
        Deletion &operator=(const Deletion &) = delete;
        ~Deletion();

        /// The rows' bytes that somebody held when this began.
        [[nodiscard]] const std::vector<std::shared_ptr<RowBytes>> &held() const { return held_; }

    private:
        RowRegistry &registry_;
        std::vector<std::shared_ptr<RowBytes>> held_;
    };

    struct Entry {
        std::shared_ptr<RowBytes> bytes;
        bool rowGoes = false; ///< its bytes must be kept now: nobody else will
    };

    /// The row's bytes, shared with whoever holds them already. During a Fetch.
    Entry bytesOf(const std::shared_ptr<StoreParts> &parts, const RowKey &key, std::uint64_t size);

    /// By RowBytes, when they end.
    void forget(const RowKey &key);

private:
    std::mutex mutex_;
    std::map<RowKey, std::weak_ptr<RowBytes>> held_;
    std::set<RowKey> going_; // attribute 0 stands for the row
    int fetches_ = 0;
    int deletions_ = 0;

    void forgetGoneRows();
};

} // namespace skyflare
