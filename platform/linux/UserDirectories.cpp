#include "platform/linux/UserDirectories.h"

#include <glib.h>

#include <cstdlib>

namespace skyflare {

namespace {

namespace fs = std::filesystem;

fs::path baseDirectory(const char *variable, const char *belowHome)
{
    const char *value = std::getenv(variable);
    const fs::path folder = value ? value : "";
    return (folder.is_absolute() ? folder : fs::path(g_get_home_dir()) / belowHome) / "skyflare";
}

fs::path picturesFolder()
{
    const char *folder = g_get_user_special_dir(G_USER_DIRECTORY_PICTURES);
    return (folder ? fs::path(folder) : fs::path(g_get_home_dir()) / "Pictures") / "Skyflare";
}

} // namespace

UserDirectories UserDirectories::standard()
{
    return {baseDirectory("XDG_DATA_HOME", ".local/share"), baseDirectory("XDG_CONFIG_HOME", ".config"),
            baseDirectory("XDG_STATE_HOME", ".local/state"), baseDirectory("XDG_CACHE_HOME", ".cache"),
            picturesFolder()};
}

UserDirectories UserDirectories::under(const fs::path &folder)
{
    const fs::path root = fs::absolute(folder);
    return {root / "data", root / "config", root / "state", root / "cache", root / "Pictures" / "Skyflare"};
}

} // namespace skyflare
