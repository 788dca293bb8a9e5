#pragma once

#include "platform/base/Result.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace skyflare {

using Bytes = std::vector<std::uint8_t>;

/// Bytes that are somewhere: in memory, or in a row of a database that is read when they are asked for.
///
/// Threads: any; a source may be read by several threads at once.
class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource &) = delete;
    ByteSource &operator=(const ByteSource &) = delete;
    virtual ~ByteSource() = default;

    [[nodiscard]] virtual std::uint64_t size() const = 0;

    /// Fills `into` from `offset` on. Reading past the end is an error, and so is a row that is gone.
    virtual Result<> read(std::uint64_t offset, std::span<std::uint8_t> into) const = 0;

    /// All of it, in memory; shared, not copied, where it is there already.
    virtual Result<std::shared_ptr<const Bytes>> readAll() const;
};

/// Bytes in memory.
class MemoryBytes final : public ByteSource {
public:
    explicit MemoryBytes(std::shared_ptr<const Bytes> bytes) : bytes_(std::move(bytes)) {}

    [[nodiscard]] std::uint64_t size() const override { return bytes_->size(); }
    Result<> read(std::uint64_t offset, std::span<std::uint8_t> into) const override;
    Result<std::shared_ptr<const Bytes>> readAll() const override { return bytes_; }

private:
    std::shared_ptr<const Bytes> bytes_;
};

} // namespace skyflare
