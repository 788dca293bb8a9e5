#include "platform/linux/DesktopNotifications.h"

#include "platform/base/Handle.h"

#include <gio/gio.h>

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

constexpr const char *service = "org.freedesktop.Notifications";
constexpr const char *path = "/org/freedesktop/Notifications";
constexpr const char *appName = "Skyflare";

std::vector<std::string> textsIn(const Variant &values)
{
    std::vector<std::string> texts;
    const Variant list = takeVariant(g_variant_get_child_value(values.get(), 0));
    for (std::size_t index = 0; index < g_variant_n_children(list.get()); ++index) {
        const char *text = nullptr;
        g_variant_get_child(list.get(), index, "&s", &text);
        texts.emplace_back(text);
    }
    return texts;
}

std::string escaped(const std::string &text)
{
    const Handle<gchar, &g_free> markup(g_markup_escape_text(text.c_str(), -1));
    return markup.get();
}

} // namespace

void DesktopNotifications::show(Content content, Shown shown, Chosen chosen)
{
    listen();
    bus_.call({service, path, service, "GetCapabilities", {}, "(as)"},
              [weak = weak_from_this(), content = std::move(content), shown = std::move(shown),
               chosen = std::move(chosen)](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  if (answer)
                      self->notify(content, textsIn(answer->values), shown, chosen);
                  else
                      shown(answer.error());
              });
}

void DesktopNotifications::notify(const Content &content, const std::vector<std::string> &capabilities,
                                  Shown shown, Chosen chosen)
{
    const auto can = [&](const char *what) {
        return std::ranges::find(capabilities, what) != capabilities.end();
    };
    if (!content.actions.empty() && !can("actions")) {
        shown(Error{"notifications", 0, "the desktop's notifications cannot be chosen"});
        return;
    }
    const std::string body = can("body-markup") ? escaped(content.body) : content.body;
    bus_.call({service, path, service, "Notify", argumentsOf(content, body), "(u)"},
              [weak = weak_from_this(), shown = std::move(shown),
               chosen = std::move(chosen)](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  if (!answer) {
                      shown(answer.error());
                      return;
                  }
                  std::uint32_t id = 0;
                  g_variant_get(answer->values.get(), "(u)", &id);
                  if (chosen)
                      self->open_[id] = chosen;
                  shown({});
              });
}

Variant DesktopNotifications::argumentsOf(const Content &content, const std::string &body) const
{
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    for (const Action &action : content.actions) {
        g_variant_builder_add(&actions, "s", action.key.c_str());
        g_variant_builder_add(&actions, "s", action.title.c_str());
    }
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string(desktopEntry_.c_str()));
    constexpr std::uint32_t replacesNone = 0;
    constexpr std::int32_t usualTime = -1;
    return takeVariant(g_variant_new("(susssasa{sv}i)", appName, replacesNone, desktopEntry_.c_str(),
                                     content.summary.c_str(), body.c_str(), &actions, &hints, usualTime));
}

void DesktopNotifications::listen()
{
    if (!subscriptions_.empty())
        return;
    const auto weak = weak_from_this();
    subscriptions_.push_back(bus_.subscribe({service, path, service, "ActionInvoked", "(us)", {}},
                                            [weak](const BusSignal &signal) {
                                                std::uint32_t id = 0;
                                                const char *key = nullptr;
                                                g_variant_get(signal.values.get(), "(u&s)", &id, &key);
                                                if (const auto self = weak.lock())
                                                    self->invoked(id, key);
                                            }));
    subscriptions_.push_back(bus_.subscribe({service, path, service, "NotificationClosed", "(uu)", {}},
                                            [weak](const BusSignal &signal) {
                                                std::uint32_t id = 0;
                                                g_variant_get_child(signal.values.get(), 0, "u", &id);
                                                if (const auto self = weak.lock())
                                                    self->open_.erase(id);
                                            }));
    // A new service counts anew: its numbers are not ours.
    subscriptions_.push_back(bus_.watch(service, [weak](bool /*isThere*/) {
        if (const auto self = weak.lock())
            self->open_.clear();
    }));
}

void DesktopNotifications::invoked(std::uint32_t id, const std::string &key)
{
    const auto found = open_.extract(id);
    if (!found.empty())
        found.mapped()(key);
}

} // namespace skyflare
