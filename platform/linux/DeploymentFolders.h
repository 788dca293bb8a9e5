#pragma once

#include <filesystem>
#include <vector>

namespace skyflare {

/// Where the files stand with which a deployer sets the program up, the folder that goes before the others
/// first: /etc/skyflare, beside the program, and share/skyflare of the tree that the program is installed in.
///
/// Threads: any.
std::vector<std::filesystem::path> deploymentFolders();

} // namespace skyflare
