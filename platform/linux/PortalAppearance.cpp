#include "platform/linux/PortalAppearance.h"

#include "platform/linux/Portal.h"

#include <gio/gio.h>

#include <string_view>
#include <utility>

namespace skyflare {

namespace {

constexpr const char *settings = "org.freedesktop.portal.Settings";
constexpr const char *appearance = "org.freedesktop.appearance";
constexpr const char *key = "color-scheme";

/// The last of `values`, a number within any depth of variants; what it is not, or does not know, counts as
/// no preference.
ColorScheme schemeOf(const Variant &values)
{
    Variant value =
        takeVariant(g_variant_get_child_value(values.get(), g_variant_n_children(values.get()) - 1));
    while (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_VARIANT) == TRUE)
        value = takeVariant(g_variant_get_variant(value.get()));
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_UINT32) == FALSE)
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

void PortalAppearance::observe(std::function<void(ColorScheme)> changed)
{
    changed_ = std::make_shared<const std::function<void(ColorScheme)>>(std::move(changed));
    subscription_ =
        bus_.subscribe({portal::service, portal::path, settings, "SettingChanged", "(ssv)", appearance},
                       [heard = changed_](const BusSignal &signal) {
                           const char *changedKey = nullptr;
                           g_variant_get_child(signal.values.get(), 1, "&s", &changedKey);
                           if (std::string_view(changedKey) == key)
                               (*heard)(schemeOf(signal.values));
                       });
    restart_ = bus_.watch(portal::service, [this](bool isThere) {
        if (isThere)
            read(); // what has changed meanwhile
    });
    read();
}

void PortalAppearance::read()
{
    bus_.call({portal::service, portal::path, settings, "Read",
               takeVariant(g_variant_new("(ss)", appearance, key)), "(v)"},
              [weak = std::weak_ptr(changed_)](const Result<BusAnswer> &answer) {
                  if (const auto changed = weak.lock(); changed && answer)
                      (*changed)(schemeOf(answer->values));
              });
}

} // namespace skyflare
