#include "platform/linux/PortalAppearance.h"

#include <doctest/doctest.h>
#include <gio/gio.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

using namespace skyflare;

namespace {

constexpr auto deadline = std::chrono::seconds{60};

/// A session bus for this test alone, with a portal that knows one setting.
class Portal {
public:
    explicit Portal(guint32 scheme) : scheme_(scheme)
    {
        g_test_dbus_up(bus_);
        connection_ = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        GDBusNodeInfo *node = g_dbus_node_info_new_for_xml(
            "<node><interface name='org.freedesktop.portal.Settings'><method name='Read'>"
            "<arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='out'/>"
            "</method></interface></node>",
            nullptr);
        static constexpr GDBusInterfaceVTable table{&Portal::called, nullptr, nullptr, {}};
        g_dbus_connection_register_object(connection_, "/org/freedesktop/portal/desktop", node->interfaces[0],
                                          &table, this, nullptr, nullptr);
        g_dbus_node_info_unref(node);
        GVariant *answer = g_dbus_connection_call_sync(
            connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "RequestName", g_variant_new("(su)", "org.freedesktop.portal.Desktop", 0), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        g_variant_unref(answer);
    }
    Portal(const Portal &) = delete;
    Portal &operator=(const Portal &) = delete;
    ~Portal()
    {
        g_object_unref(connection_);
        g_test_dbus_down(bus_);
        g_object_unref(bus_);
    }

    void change(const char *key, GVariant *value)
    {
        g_dbus_connection_emit_signal(
            connection_, nullptr, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
            "SettingChanged", g_variant_new("(ssv)", "org.freedesktop.appearance", key, value), nullptr);
    }

private:
    static void called(GDBusConnection * /*connection*/, const gchar * /*sender*/, const gchar * /*path*/,
                       const gchar * /*interface*/, const gchar * /*method*/, GVariant * /*parameters*/,
                       GDBusMethodInvocation *invocation, gpointer data)
    {
        // As portals do it: a variant in a variant.
        GVariant *value = g_variant_new_variant(g_variant_new_uint32(static_cast<Portal *>(data)->scheme_));
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(v)", value));
    }

    const guint32 scheme_;
    GTestDBus *bus_ = g_test_dbus_new(G_TEST_DBUS_NONE);
    GDBusConnection *connection_ = nullptr;
};

/// What was said, waited for while the portal's own context is served.
struct Heard {
    std::mutex mutex;
    std::vector<ColorScheme> schemes;

    void note(ColorScheme scheme)
    {
        const std::scoped_lock lock(mutex);
        schemes.push_back(scheme);
        g_main_context_wakeup(nullptr);
    }
    bool comes(const std::vector<ColorScheme> &expected)
    {
        const auto end = std::chrono::steady_clock::now() + deadline;
        while (std::chrono::steady_clock::now() < end) {
            {
                const std::scoped_lock lock(mutex);
                if (schemes.size() >= expected.size())
                    return schemes == expected;
            }
            g_main_context_iteration(nullptr, TRUE);
        }
        return false;
    }
};

} // namespace

TEST_CASE("the portal is asked, and heard while it changes; without one nothing is said")
{
    Heard heard;
    {
        Portal portal(2);
        PortalAppearance appearance;
        appearance.observe([&](ColorScheme scheme) { heard.note(scheme); });
        REQUIRE(heard.comes({ColorScheme::Light}));
        portal.change("contrast", g_variant_new_uint32(1)); // of no concern
        portal.change("color-scheme", g_variant_new_uint32(1));
        REQUIRE(heard.comes({ColorScheme::Light, ColorScheme::Dark}));
        portal.change("color-scheme", g_variant_new_string("dark")); // not a number
        REQUIRE(heard.comes({ColorScheme::Light, ColorScheme::Dark, ColorScheme::NoPreference}));
    }
    g_setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", TRUE);
    PortalAppearance appearance;
    appearance.observe([&](ColorScheme scheme) { heard.note(scheme); });
}
