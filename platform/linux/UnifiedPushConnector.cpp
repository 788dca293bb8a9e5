#include "platform/linux/UnifiedPushConnector.h"

#include "platform/base/Handle.h"
#include "platform/push/PushSubscription.h"

#include <gio/gio.h>

#include <string_view>

namespace skyflare {

namespace {

constexpr const char *path = "/org/unifiedpush/Connector";
constexpr const char *version2 = "org.unifiedpush.Connector2";
constexpr std::size_t longestMessage = 4096;

constexpr const char *interfaces = R"(<node>
<interface name='org.unifiedpush.Connector2'>
  <method name='Message'><arg type='a{sv}' direction='in'/><arg type='a{sv}' direction='out'/></method>
  <method name='NewEndpoint'><arg type='a{sv}' direction='in'/><arg type='a{sv}' direction='out'/></method>
  <method name='Unregistered'><arg type='a{sv}' direction='in'/><arg type='a{sv}' direction='out'/></method>
</interface>
<interface name='org.unifiedpush.Connector1'>
  <method name='Message'>
    <arg type='s' direction='in'/><arg type='ay' direction='in'/><arg type='s' direction='in'/>
  </method>
  <method name='NewEndpoint'><arg type='s' direction='in'/><arg type='s' direction='in'/></method>
  <method name='Unregistered'><arg type='s' direction='in'/></method>
</interface>
</node>)";

/// The arguments of version 1 by the names that version 2 gives them.
Variant named(const BusRequest &request)
{
    if (request.interface == version2)
        return takeVariant(g_variant_get_child_value(request.arguments.get(), 0));
    const std::string_view second = request.method == "Message" ? "message" : "endpoint";
    const char *const names[] = {"token", second.data(), "id"};
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (gsize i = 0; i < g_variant_n_children(request.arguments.get()); ++i) {
        const Variant value = takeVariant(g_variant_get_child_value(request.arguments.get(), i));
        g_variant_builder_add(&builder, "{sv}", names[i], value.get());
    }
    return takeVariant(g_variant_builder_end(&builder));
}

/// Empty where there is no such text.
std::string textIn(const Variant &dictionary, const char *name)
{
    const char *text = "";
    g_variant_lookup(dictionary.get(), name, "&s", &text);
    return text;
}

/// A message is told by its identifier that it has arrived.
Variant answerTo(const BusRequest &request, const std::string &identifier)
{
    if (request.interface != version2)
        return {};
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    if (!identifier.empty())
        g_variant_builder_add(&builder, "{sv}", "id", g_variant_new_string(identifier.c_str()));
    return takeVariant(g_variant_new("(a{sv})", &builder));
}

} // namespace

std::shared_ptr<UnifiedPushConnector> UnifiedPushConnector::offer(MessageBus &sessionBus, Events events)
{
    std::shared_ptr<UnifiedPushConnector> connector(new UnifiedPushConnector(std::move(events))); // NOLINT
    connector->offered_ =
        sessionBus.offer({path, interfaces,
                          [weak = connector->weak_from_this()](const BusRequest &request) -> Result<Variant> {
                              const auto self = weak.lock();
                              return self ? self->serve(request)
                                          : Error{"org.freedesktop.DBus.Error.UnknownObject", 0, "gone"};
                          }});
    return connector;
}

Result<Variant> UnifiedPushConnector::serve(const BusRequest &request) const
{
    const Variant arguments = named(request);
    if (!token_.empty() && textIn(arguments, "token") == token_)
        take(request.method, arguments);
    return answerTo(request, textIn(arguments, "id"));
}

void UnifiedPushConnector::take(const std::string &method, const Variant &named) const
{
    if (method == "Message") {
        takeMessage(named);
    } else if (method == "Unregistered") {
        events_.unregistered();
    } else if (const std::string endpoint = textIn(named, "endpoint"); isPushEndpoint(endpoint)) {
        events_.newEndpoint(endpoint);
    }
}

void UnifiedPushConnector::takeMessage(const Variant &named) const
{
    const Handle<GVariant, &g_variant_unref> message(
        g_variant_lookup_value(named.get(), "message", G_VARIANT_TYPE_BYTESTRING));
    gsize size = 0;
    const auto *bytes =
        message ? static_cast<const std::uint8_t *>(g_variant_get_fixed_array(message.get(), &size, 1))
                : nullptr;
    if (size > 0 && size <= longestMessage)
        events_.message(Bytes(bytes, bytes + size), textIn(named, "id"));
}

} // namespace skyflare
