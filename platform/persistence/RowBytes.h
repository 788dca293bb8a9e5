#pragma once

#include "platform/base/Bytes.h"
#include "platform/persistence/RowRegistry.h"

#include <mutex>

namespace skyflare {

class Database;

/// A binary value of a stored row, read from the row when it is asked for. Before the row is freed, its
/// bytes are put into memory here, so that whoever holds them notices nothing.
///
/// Threads: any. Shares the store's tables and readers, and works on when the container has ended.
class RowBytes final : public ByteSource {
public:
    RowBytes(std::shared_ptr<StoreParts> parts, RowKey key, std::uint64_t size)
        : parts_(std::move(parts)), key_(key), size_(size)
    {
    }
    RowBytes(const RowBytes &) = delete;
    RowBytes &operator=(const RowBytes &) = delete;
    ~RowBytes() override;

    [[nodiscard]] std::uint64_t size() const override { return size_; }
    Result<> read(std::uint64_t offset, std::span<std::uint8_t> into) const override;
    Result<std::shared_ptr<const Bytes>> readAll() const override;

    /// Reads all of it into memory, through a connection that sees the row.
    Result<> keepInMemory(Database &database) const;

private:
    const std::shared_ptr<StoreParts> parts_;
    const RowKey key_;
    const std::uint64_t size_;
    mutable std::mutex mutex_;
    mutable std::shared_ptr<const Bytes> kept_;

    [[nodiscard]] std::shared_ptr<const Bytes> kept() const;
    Result<> readRow(Database &database, std::uint64_t offset, std::span<std::uint8_t> into) const;
};

} // namespace skyflare
