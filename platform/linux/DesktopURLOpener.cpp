#include "platform/linux/DesktopURLOpener.h"

#include "platform/base/Handle.h"
#include "platform/base/Result.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <csignal>
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

/// Of one desktop, the better one first.
constexpr std::array<SettingsRow, 9> settingsRows{{
    {"GNOME", "gnome-control-center", "region"},
    {"Phosh", "gnome-control-center", "region"},
    {"KDE", "systemsettings", "kcm_regionandlang"},
    {"KDE", "plasma-settings", nullptr}, // the phone's
    {"Lomiri", "lomiri-url-dispatcher", "settings:///system/language"},
    {"XFCE", "xfce4-settings-manager", nullptr},
    {"MATE", "mate-control-center", nullptr},
    {"X-Cinnamon", "cinnamon-settings", nullptr},
    {"LXQt", "lxqt-config", nullptr},
}};

const SettingsRow *settingsOf(std::string_view desktop)
{
    for (const SettingsRow &row : settingsRows)
        if (row.desktop == desktop && Path(g_find_program_in_path(row.program)))
            return &row;
    return nullptr;
}

/// The running desktop's settings; null where it has none that we know. XDG_CURRENT_DESKTOP lists what the
/// desktop is, and what it is like, in that order.
const SettingsRow *desktopSettings()
{
    const char *variable = std::getenv("XDG_CURRENT_DESKTOP");
    std::string_view desktops = variable ? variable : "";
    while (!desktops.empty()) {
        const auto end = std::min(desktops.find(':'), desktops.size());
        if (const SettingsRow *const row = settingsOf(desktops.substr(0, end)))
            return row;
        desktops.remove_prefix(std::min(end + 1, desktops.size()));
    }
    return nullptr;
}

/// A program of the user's can be ended by signals that we block.
void unblockSignals(gpointer /*data*/)
{
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// What it says is not for our console.
constexpr auto apart =
    static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);

std::string takeMessage(GError *error)
{
    const Failure failure(error);
    return failure ? failure->message : "no reason is given";
}

/// The program that the user has for such addresses; null if there is none.
AppInfoHandle handlerOf(const std::string &url)
{
    const Scheme scheme(g_uri_parse_scheme(url.c_str()));
    return AppInfoHandle(scheme ? g_app_info_get_default_for_uri_scheme(scheme.get()) : nullptr);
}

/// The error says why not.
Result<> open(const std::string &url)
{
    const auto handler = handlerOf(url);
    if (!handler)
        return Error{"url", 0, "there is no program for it"};
    std::string address = url;
    GList urls{address.data(), nullptr, nullptr};
    GError *error = nullptr;
    if (g_desktop_app_info_launch_uris_as_manager(G_DESKTOP_APP_INFO(handler.get()), &urls, nullptr, apart,
                                                  &unblockSignals, nullptr, nullptr, nullptr,
                                                  &error) == FALSE)
        return Error{"url", 0, takeMessage(error)};
    return {};
}

Result<> open(const SettingsRow &settings)
{
    std::string program = settings.program;
    std::string page = settings.page ? settings.page : "";
    std::array<char *, 3> command{program.data(), page.empty() ? nullptr : page.data(), nullptr};
    GError *error = nullptr;
    if (g_spawn_async(nullptr, command.data(), nullptr, apart, &unblockSignals, nullptr, nullptr, &error) ==
        FALSE)
        return Error{"settings", 0, takeMessage(error)};
    return {};
}

} // namespace

bool DesktopURLOpener::canOpenURL(const std::string &url)
{
    if (url == openSettingsURLString)
        return services_.ownSettingsPage || desktopSettings();
    if (!isOpenableURL(url))
        return false;
    return handlerOf(url) != nullptr;
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
        if (const auto opened = open(url); !opened)
            console.reportLine("Nothing opens " + url + ": " + opened.error().message);
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
    services_.queue.async([row, services = services_] {
        const auto opened = open(*row);
        if (opened)
            return;
        services.console.reportLine("The settings do not open: " + opened.error().message);
        if (services.ownSettingsPage)
            services.mainQueue.async(services.ownSettingsPage);
    });
}

} // namespace skyflare
