#pragma once

#include "platform/base/FreeSpace.h"

namespace skyflare {

/// What the kernel says of the file system that a folder is on, or will be: what is kept back for the
/// administrator does not count.
///
/// Threads: any. Without state.
class FileSystemSpace final : public FreeSpace {
public:
    [[nodiscard]] std::optional<std::uint64_t>
    bytesAvailable(const std::filesystem::path &folder) const override;
};

} // namespace skyflare
