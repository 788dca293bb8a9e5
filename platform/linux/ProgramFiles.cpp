#include "platform/linux/ProgramFiles.h"

#include <system_error>

namespace skyflare {

ProgramFiles ProgramFiles::standard()
{
    namespace fs = std::filesystem;
    std::error_code failed;
    const fs::path program = fs::read_symlink("/proc/self/exe", failed);
    if (failed)
        return {.deployment = {"/etc/skyflare"}, .localization = {}};
    const fs::path folder = program.parent_path();
    const fs::path shared = folder.parent_path() / "share" / program.filename();
    const fs::path beside = folder / "localization";
    return {.deployment = {"/etc/skyflare", folder, shared},
            .localization = fs::is_directory(beside, failed) ? beside : shared / "localization"};
}

} // namespace skyflare
