#include "platform/linux/DesktopURLOpener.h"

#include "platform/base/Handle.h"

#include <gio/gio.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace skyflare {

namespace {

using Failure = Handle<GError, &g_error_free>;
using AppInfoHandle = Handle<void, &g_object_unref>;
using Path = Handle<void, &g_free>;
using Scheme = Handle<char, &g_free>;

struct SettingsRow {
    std::string_view desktop; ///< a part of XDG_CURRENT_DESKTOP
    const char *program;
    const char *page;
};

constexpr std::array<SettingsRow, 5> settingsRows{{
    {"GNOME", "gnome-control-center", "region"},
    {"Phosh", "gnome-control-center", "region"},
    {"KDE", "systemsettings", "kcm_regionandlang"},
    {"XFCE", "xfce4-settings-manager", nullptr},
    {"MATE", "mate-control-center", nullptr},
}};

bool isListed(std::string_view list, std::string_view wanted)
{
    while (!list.empty()) {
        const auto end = std::min(list.find(':'), list.size());
        if (list.substr(0, end) == wanted)
            return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

/// The running desktop's settings; null where it has none that we know.
const SettingsRow *desktopSettings()
{
    const char *desktops = std::getenv("XDG_CURRENT_DESKTOP");
    for (const SettingsRow &row : settingsRows)
        if (desktops && isListed(desktops, row.desktop) && Path(g_find_program_in_path(row.program)))
            return &row;
    return nullptr;
}

std::string takeMessage(GError *error)
{
    const Failure failure(error);
    return failure ? failure->message : "no reason is given";
}

} // namespace

bool DesktopURLOpener::canOpenURL(const std::string &url)
{
    if (url == openSettingsURLString)
        return services_.ownSettingsPage || desktopSettings();
    if (!isOpenableURL(url))
        return false;
    const Scheme scheme(g_uri_parse_scheme(url.c_str()));
    return scheme && AppInfoHandle(g_app_info_get_default_for_uri_scheme(scheme.get()));
}

void DesktopURLOpener::openURL(const std::string &url)
{
    if (url == openSettingsURLString) {
        openSettings();
        return;
    }
    if (!isOpenableURL(url)) {
        services_.console.reportLine("This address is not opened: " + url);
        return;
    }
    services_.queue.async([url, &console = services_.console] {
        GError *error = nullptr;
        if (!g_app_info_launch_default_for_uri(url.c_str(), nullptr, &error))
            console.reportLine("Nothing opens " + url + ": " + takeMessage(error));
    });
}

void DesktopURLOpener::openSettings()
{
    const SettingsRow *const row = desktopSettings();
    if (!row) {
        if (services_.ownSettingsPage)
            services_.ownSettingsPage();
        return;
    }
    services_.queue.async([row, &console = services_.console] {
        std::string program = row->program;
        std::string page = row->page ? row->page : "";
        std::array<char *, 3> command{program.data(), page.empty() ? nullptr : page.data(), nullptr};
        GError *error = nullptr;
        if (!g_spawn_async(nullptr, command.data(), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, nullptr,
                           &error))
            console.reportLine("The settings do not open: " + takeMessage(error));
    });
}

} // namespace skyflare
