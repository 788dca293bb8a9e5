#include "platform/linux/FileSystemSpace.h"

#include <sys/statvfs.h>

#include <cerrno>
#include <limits>

namespace skyflare {

std::optional<std::uint64_t> FileSystemSpace::bytesAvailable(const std::filesystem::path &folder) const
{
    struct statvfs facts {};
    if (statvfs(folder.c_str(), &facts) != 0) {
        const bool mayComeLater =
            errno == ENOENT && folder.has_parent_path() && folder != folder.parent_path();
        return mayComeLater ? bytesAvailable(folder.parent_path()) : std::nullopt;
    }
    if (facts.f_blocks == 0) // it counts nothing: some that stand for another machine's files
        return std::nullopt;
    const std::uint64_t blockBytes = facts.f_frsize != 0 ? facts.f_frsize : facts.f_bsize;
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    if (blockBytes != 0 && facts.f_bavail > most / blockBytes)
        return most;
    return facts.f_bavail * blockBytes;
}

} // namespace skyflare
