#include "platform/linux/ApplicationObject.h"

#include <gio/gio.h>

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

constexpr const char *interfaces = R"(<node><interface name='org.freedesktop.Application'>
<method name='Activate'><arg type='a{sv}' direction='in'/></method>
<method name='Open'><arg type='as' direction='in'/><arg type='a{sv}' direction='in'/></method>
<method name='ActivateAction'>
  <arg type='s' direction='in'/><arg type='av' direction='in'/><arg type='a{sv}' direction='in'/>
</method>
</interface></node>)";

/// "org.example.App" is at "/org/example/App"; a path has no dashes.
std::string pathOf(std::string applicationId)
{
    std::ranges::replace(applicationId, '.', '/');
    std::ranges::replace(applicationId, '-', '_');
    return "/" + applicationId;
}

/// The last argument of each method is what the desktop says of itself.
std::string tokenIn(const BusRequest &request)
{
    const gsize last = g_variant_n_children(request.arguments.get()) - 1;
    const Variant platform = takeVariant(g_variant_get_child_value(request.arguments.get(), last));
    const char *token = "";
    for (const char *name : {"desktop-startup-id", "activation-token"}) // the newer name wins
        g_variant_lookup(platform.get(), name, "&s", &token);
    return token;
}

} // namespace

MessageBus::Subscription
offerApplicationObject(MessageBus &sessionBus, const std::string &applicationId,
                       std::function<void(const std::string &activationToken)> activated)
{
    return sessionBus.offer(
        {pathOf(applicationId), interfaces,
         [activated = std::move(activated)](const BusRequest &request) -> Result<Variant> {
             activated(tokenIn(request));
             return Variant();
         }});
}

} // namespace skyflare
