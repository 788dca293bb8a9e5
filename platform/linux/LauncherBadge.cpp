#include "platform/linux/LauncherBadge.h"

#include <gio/gio.h>

#include <cstdint>

namespace skyflare {

void LauncherBadge::setCount(std::size_t count)
{
    const std::string uri = "application://" + desktopEntry_ + ".desktop";
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&properties, "{sv}", "count",
                          g_variant_new_int64(static_cast<std::int64_t>(count)));
    g_variant_builder_add(&properties, "{sv}", "count-visible", g_variant_new_boolean(count > 0));
    bus_.announce({"/com/canonical/unity/launcherentry/skyflare", "com.canonical.Unity.LauncherEntry",
                   "Update", takeVariant(g_variant_new("(sa{sv})", uri.c_str(), &properties))});
}

} // namespace skyflare
