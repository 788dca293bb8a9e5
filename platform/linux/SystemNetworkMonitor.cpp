#include "platform/linux/SystemNetworkMonitor.h"

#include <gio/gio.h>

#include <utility>

namespace skyflare {

namespace {

/// Null where GIO has none.
GNetworkMonitor *makeMonitor()
{
    g_tls_backend_get_default(); // has GIO load what it is made of; there is no plainer way to ask for that
    GIOExtensionPoint *const kinds = g_io_extension_point_lookup(G_NETWORK_MONITOR_EXTENSION_POINT_NAME);
    // Not GIO's default: that may be NetworkManager's, which waits for the system bus, and would end the
    // program with it.
    GIOExtension *const kind =
        kinds != nullptr ? g_io_extension_point_get_extension_by_name(kinds, "netlink") : nullptr;
    if (kind == nullptr)
        return nullptr;
    return static_cast<GNetworkMonitor *>(
        g_initable_new(g_io_extension_get_type(kind), nullptr, nullptr, nullptr));
}

} // namespace

void SystemNetworkMonitor::Release::operator()(_GNetworkMonitor *monitor) const
{
    g_object_unref(monitor);
}

SystemNetworkMonitor::SystemNetworkMonitor()
{
    thread_.async([this] { begin(); });
}

SystemNetworkMonitor::~SystemNetworkMonitor()
{
    observe({});
    thread_.async([this] { monitor_.reset(); });
}

void SystemNetworkMonitor::observe(std::function<void()> changed)
{
    const std::scoped_lock lock(mutex_);
    changed_ = std::move(changed);
}

void SystemNetworkMonitor::begin()
{
    monitor_.reset(makeMonitor());
    if (!monitor_)
        return;
    const auto changed = +[](GNetworkMonitor *, gboolean, gpointer self) {
        static_cast<SystemNetworkMonitor *>(self)->look();
    };
    g_signal_connect(monitor_.get(), "network-changed", G_CALLBACK(changed), this);
    look();
}

void SystemNetworkMonitor::look()
{
    const bool isConnected = g_network_monitor_get_network_available(monitor_.get()) == TRUE;
    const std::scoped_lock lock(mutex_); // who has seen the change and observes then is not told of it
    if (isConnected_.exchange(isConnected) == isConnected)
        return;
    if (const auto changed = changed_) // a copy: it may observe anew
        changed();
}

} // namespace skyflare
