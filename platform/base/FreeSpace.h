#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace skyflare {

/// How much room there is for files.
///
/// Threads: any. It may take long where a folder is on another machine: never call it on main.
class FreeSpace {
public:
    FreeSpace() = default;
    FreeSpace(const FreeSpace &) = delete;
    FreeSpace &operator=(const FreeSpace &) = delete;
    virtual ~FreeSpace() = default;

    /// Bytes that this user can still write into files of that folder, which need not be there yet.
    /// @return nothing where that cannot be told
    [[nodiscard]] virtual std::optional<std::uint64_t>
    bytesAvailable(const std::filesystem::path &folder) const = 0;
};

} // namespace skyflare
