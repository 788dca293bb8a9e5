#include "platform/linux/BackupExclusion.h"

#include <sys/xattr.h>
#include <system_error>

#include <cerrno>
#include <string_view>

namespace skyflare {

Result<> excludeFromBackup(const std::filesystem::path &file)
{
    constexpr std::string_view value = "false";
    if (setxattr(file.c_str(), "user.xdg.robots.backup", value.data(), value.size(), 0) == 0)
        return {};
    const int code = errno;
    return Error{"file",
                 code,
                 file.string() + " cannot be marked: " + std::generic_category().message(code),
                 {{"path", file.string()}}};
}

} // namespace skyflare
