#include "platform/linux/PortalAppearance.h"

#include "platform/base/Handle.h"

#include <gio/gio.h>

#include <string_view>
#include <thread>

namespace skyflare {

namespace {

using Context = Handle<GMainContext, &g_main_context_unref>;
using Loop = Handle<GMainLoop, &g_main_loop_unref>;
using Cancellable = Handle<GCancellable, &g_object_unref>;
using Variant = Handle<GVariant, &g_variant_unref>;

constexpr const char *portal = "org.freedesktop.portal.Desktop";
constexpr const char *path = "/org/freedesktop/portal/desktop";
constexpr const char *settings = "org.freedesktop.portal.Settings";
constexpr const char *appearance = "org.freedesktop.appearance";
constexpr const char *key = "color-scheme";

/// A number within any depth of variants; what it is not, or does not know, counts as no preference.
ColorScheme schemeOf(Variant value)
{
    while (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_VARIANT))
        value.reset(g_variant_get_variant(value.get()));
    if (!g_variant_is_of_type(value.get(), G_VARIANT_TYPE_UINT32))
        return ColorScheme::NoPreference;
    switch (g_variant_get_uint32(value.get())) {
    case 1:
        return ColorScheme::Dark;
    case 2:
        return ColorScheme::Light;
    default:
        return ColorScheme::NoPreference;
    }
}

} // namespace

/// The thread that listens, with a main context of its own.
class PortalAppearance::Listener {
public:
    explicit Listener(std::function<void(ColorScheme)> changed)
        : changed_(std::move(changed)),
          context_(g_main_context_new()),
          cancellable_(g_cancellable_new()),
          loop_(g_main_loop_new(context_.get(), FALSE)),
          thread_([this] { run(); })
    {
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
    ~Listener()
    {
        // From within the loop: one that has not begun to run would not hear of it.
        g_main_context_invoke(context_.get(), &Listener::quit, loop_.get());
        thread_.join();
    }

private:
    void run()
    {
        g_main_context_push_thread_default(context_.get());
        g_bus_get(G_BUS_TYPE_SESSION, cancellable_.get(), &Listener::busCame, this);
        g_main_loop_run(loop_.get());
        g_cancellable_cancel(cancellable_.get());
        if (bus_ != nullptr) {
            g_dbus_connection_signal_unsubscribe(bus_, subscription_);
            g_object_unref(bus_);
        }
        while (g_main_context_iteration(context_.get(), FALSE) == TRUE) {
        }
        g_main_context_pop_thread_default(context_.get());
    }

    static gboolean quit(gpointer loop)
    {
        g_main_loop_quit(static_cast<GMainLoop *>(loop));
        return G_SOURCE_REMOVE;
    }

    static void busCame(GObject * /*source*/, GAsyncResult *result, gpointer data)
    {
        auto *self = static_cast<Listener *>(data);
        GDBusConnection *bus = g_bus_get_finish(result, nullptr);
        if (bus == nullptr)
            return; // no session bus, or we are ending
        self->bus_ = bus;
        self->subscription_ = g_dbus_connection_signal_subscribe(bus, portal, settings, "SettingChanged",
                                                                 path, appearance, G_DBUS_SIGNAL_FLAGS_NONE,
                                                                 &Listener::settingChanged, self, nullptr);
        g_dbus_connection_call(bus, portal, path, settings, "Read", g_variant_new("(ss)", appearance, key),
                               G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, -1, self->cancellable_.get(),
                               &Listener::readDone, self);
    }

    static void readDone(GObject *source, GAsyncResult *result, gpointer data)
    {
        const Variant answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
        if (answer)
            static_cast<Listener *>(data)->changed_(
                schemeOf(Variant(g_variant_get_child_value(answer.get(), 0))));
    }

    static void settingChanged(GDBusConnection * /*bus*/, const gchar * /*sender*/, const gchar * /*path*/,
                               const gchar * /*interface*/, const gchar * /*signal*/, GVariant *arguments,
                               gpointer data)
    {
        if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssv)")))
            return;
        const gchar *changedKey = nullptr;
        g_variant_get_child(arguments, 1, "&s", &changedKey);
        if (std::string_view(changedKey) == key)
            static_cast<Listener *>(data)->changed_(
                schemeOf(Variant(g_variant_get_child_value(arguments, 2))));
    }

    const std::function<void(ColorScheme)> changed_;
    const Context context_;
    const Cancellable cancellable_;
    const Loop loop_;
    GDBusConnection *bus_ = nullptr; ///< the thread's
    guint subscription_ = 0;
    std::thread thread_; ///< last: it uses all of the above
};

PortalAppearance::PortalAppearance() = default;
PortalAppearance::~PortalAppearance() = default;

void PortalAppearance::observe(std::function<void(ColorScheme)> changed)
{
    listener_ = std::make_unique<Listener>(std::move(changed));
}

} // namespace skyflare
