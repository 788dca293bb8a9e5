#include "platform/linux/Sandbox.h"

#include <system_error>

#include <filesystem>

namespace skyflare {

bool isSandboxed()
{
    std::error_code failed;
    return std::filesystem::exists("/.flatpak-info", failed);
}

} // namespace skyflare
