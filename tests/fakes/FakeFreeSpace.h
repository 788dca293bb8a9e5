#pragma once

#include "platform/base/FreeSpace.h"

namespace skyflare {

/// A disk with as much room as the test says.
///
/// Threads: the test's.
struct FakeFreeSpace final : FreeSpace {
    std::optional<std::uint64_t> bytes = std::uint64_t{1} << 40;
    mutable int looks = 0;
    mutable std::filesystem::path lookedAt;

    [[nodiscard]] std::optional<std::uint64_t>
    bytesAvailable(const std::filesystem::path &folder) const override
    {
        ++looks;
        lookedAt = folder;
        return bytes;
    }
};

} // namespace skyflare
