#pragma once

#include "platform/base/Result.h"

#include <filesystem>

namespace skyflare {

/// Asks backup programs to leave the file out: extended attribute "user.xdg.robots.backup", value "false"
/// (freedesktop.org, Common Extended Attributes). An error where the file system knows no such attributes.
///
/// Threads: any.
Result<> excludeFromBackup(const std::filesystem::path &file);

} // namespace skyflare
