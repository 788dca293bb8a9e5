#include "platform/linux/Portal.h"

#include <gio/gio.h>

namespace skyflare::portal {

BusCall propertyCall(const char *interface, const char *name)
{
    const Variant arguments = takeVariant(g_variant_new("(ss)", interface, name));
    return {service, path, "org.freedesktop.DBus.Properties", "Get", arguments, "(v)"};
}

Variant propertyIn(const BusAnswer &answer)
{
    GVariant *value = nullptr;
    g_variant_get(answer.values.get(), "(v)", &value);
    return takeVariant(value);
}

} // namespace skyflare::portal
