#include "platform/linux/DeploymentFolders.h"

namespace skyflare {

std::vector<std::filesystem::path> deploymentFolders()
{
    std::vector<std::filesystem::path> folders{"/etc/skyflare"};
    std::error_code failed;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failed);
    if (!failed) {
        const auto folder = program.parent_path();
        folders.push_back(folder);
        folders.push_back(folder.parent_path() / "share" / "skyflare");
    }
    return folders;
}

} // namespace skyflare
