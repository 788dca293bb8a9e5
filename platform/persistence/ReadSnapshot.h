#pragma once

#include "platform/persistence/ManagedObject.h"
#include "platform/persistence/StoreParts.h"
#include "platform/sqlite/Transaction.h"

#include <memory>
#include <vector>

namespace skyflare {

/// The store as it is at the first question; later changes are not seen. No writer is waited for.
///
/// Threads: that of its maker.
class ReadSnapshot {
public:
    static Result<ReadSnapshot> begin(std::shared_ptr<StoreParts> parts);

    /// The committed objects that the request asks for. Reads no binary value.
    Result<std::vector<std::shared_ptr<ManagedObject>>> fetch(const EntityTable &table,
                                                              const FetchRequest &request);
    /// How many there are; the request's limit does not count.
    Result<std::int64_t> count(const EntityTable &table, const FetchRequest &request);
    Result<bool> contains(const EntityTable &table, std::int64_t objectID);

private:
    // In this order: the fetch is known before the store is seen, the connection goes back at the end.
    std::shared_ptr<StoreParts> parts_;
    RowRegistry::Fetch fetch_;
    ReaderPool::Reader reader_;
    Transaction transaction_;

    ReadSnapshot(std::shared_ptr<StoreParts> parts, RowRegistry::Fetch fetch, ReaderPool::Reader reader,
                 Transaction transaction);
    Result<std::shared_ptr<ManagedObject>> objectOf(const EntityTable &table, const FetchRequest &request,
                                                    const Statement &row);
    /// Leaves `into` as it is, nothing, where the column holds something of another type.
    Result<> readValue(const RowKey &key, const Statement &row, int column, AttributeValue &into);
};

} // namespace skyflare
