#include "platform/linux/PortalNotifications.h"

#include "platform/base/Handle.h"
#include "platform/linux/Portal.h"

#include <gio/gio.h>

#include <string_view>
#include <utility>

namespace skyflare {

namespace {

constexpr const char *interface = "org.freedesktop.portal.Notification";
constexpr const char *appName = "Skyflare";
constexpr std::size_t mostInFlight = 16;

using Content = NotificationBoard::Content;

std::string newIdentifier()
{
    const Handle<gchar, &g_free> uuid(g_uuid_string_random());
    return uuid.get();
}

void add(GVariantBuilder &to, const char *name, GVariant *value)
{
    g_variant_builder_add(&to, "{sv}", name, value);
}

void addActions(GVariantBuilder &to, const Content &content)
{
    GVariantBuilder buttons;
    g_variant_builder_init(&buttons, G_VARIANT_TYPE("aa{sv}"));
    for (const auto &[key, title] : content.actions) {
        if (key == "default") {
            add(to, "default-action", g_variant_new_string(key.c_str()));
            continue;
        }
        g_variant_builder_open(&buttons, G_VARIANT_TYPE_VARDICT);
        add(buttons, "label", g_variant_new_string(title.c_str()));
        add(buttons, "action", g_variant_new_string(key.c_str()));
        g_variant_builder_close(&buttons);
    }
    add(to, "buttons", g_variant_builder_end(&buttons));
}

/// What a portal knows from its second version on; an older one may refuse what it does not know.
void addPresentation(GVariantBuilder &to, const Content &content)
{
    if (content.sound != NotificationBoard::Sound::Usual) {
        const bool isHeard = content.sound == NotificationBoard::Sound::NewMessage;
        add(to, "sound", g_variant_new_string(isHeard ? "default" : "silent"));
    }
    if (content.place == NotificationBoard::Place::Usual)
        return;
    const char *hint = content.place == NotificationBoard::Place::BannerOnly ? "transient" : "tray";
    add(to, "display-hint", g_variant_new_strv(&hint, 1));
}

Variant notificationOf(const Content &content, std::uint32_t version)
{
    GVariantBuilder notification;
    g_variant_builder_init(&notification, G_VARIANT_TYPE_VARDICT);
    add(notification, "title",
        g_variant_new_string(content.summary.empty() ? appName : content.summary.c_str()));
    add(notification, "body", g_variant_new_string(content.body.c_str()));
    addActions(notification, content);
    if (version >= 2)
        addPresentation(notification, content);
    return takeVariant(g_variant_builder_end(&notification));
}

/// Newer portals put it among what comes with a choice.
std::string activationTokenIn(const Variant &choice)
{
    const Variant parameters = takeVariant(g_variant_get_child_value(choice.get(), 2));
    for (std::size_t index = 0; index < g_variant_n_children(parameters.get()); ++index) {
        GVariant *inner = nullptr;
        g_variant_get_child(parameters.get(), index, "v", &inner);
        const Variant parameter = takeVariant(inner);
        const char *token = nullptr;
        if (g_variant_is_of_type(parameter.get(), G_VARIANT_TYPE_VARDICT) == TRUE &&
            g_variant_lookup(parameter.get(), "activation-token", "&s", &token) == TRUE)
            return token;
    }
    return {};
}

} // namespace

void PortalNotifications::askWhetherThere(Shown answered)
{
    askVersion([answered = std::move(answered)](const Result<std::uint32_t> &version) {
        answered(version ? Result<>() : Result<>(version.error()));
    });
}

void PortalNotifications::askVersion(std::function<void(const Result<std::uint32_t> &)> answered)
{
    bus_.call(portal::propertyCall(interface, "version"),
              [answered = std::move(answered)](const Result<BusAnswer> &answer) {
                  if (!answer) {
                      answered(answer.error());
                      return;
                  }
                  const Variant version = portal::propertyIn(*answer);
                  const bool isNumber = g_variant_is_of_type(version.get(), G_VARIANT_TYPE_UINT32) == TRUE;
                  answered(isNumber ? g_variant_get_uint32(version.get()) : 1);
              });
}

void PortalNotifications::show(Content content, Shown shown, Chosen chosen)
{
    listen();
    if (inFlight_ == mostInFlight) {
        shown(Error{"notifications", 0, "the desktop does not keep up with the notifications"});
        return;
    }
    ++inFlight_;
    const std::string identifier = content.identifier.empty() ? newIdentifier() : content.identifier;
    open_[identifier] = std::move(chosen);
    askVersion([weak = weak_from_this(), identifier, content = std::move(content),
                shown = std::move(shown)](const Result<std::uint32_t> &version) {
        const auto self = weak.lock();
        if (!self)
            return;
        if (version)
            self->add(identifier, notificationOf(content, *version), shown);
        else
            self->didAdd(identifier, version.error(), shown);
    });
}

void PortalNotifications::add(const std::string &identifier, const Variant &notification, const Shown &shown)
{
    bus_.call({portal::service, portal::path, interface, "AddNotification",
               takeVariant(g_variant_new("(s@a{sv})", identifier.c_str(), notification.get()))},
              [weak = weak_from_this(), identifier, shown](const Result<BusAnswer> &answer) {
                  if (const auto self = weak.lock())
                      self->didAdd(identifier, answer ? Result<>() : Result<>(answer.error()), shown);
              });
}

void PortalNotifications::didAdd(const std::string &identifier, const Result<> &outcome, const Shown &shown)
{
    --inFlight_;
    if (!outcome)
        open_.erase(identifier);
    shown(outcome);
}

void PortalNotifications::remove(const std::string &identifier)
{
    if (open_.erase(identifier) != 0)
        bus_.call({portal::service, portal::path, interface, "RemoveNotification",
                   takeVariant(g_variant_new("(s)", identifier.c_str()))},
                  [](const Result<BusAnswer> & /*answer*/) {}); // it may have gone by itself
}

void PortalNotifications::listen()
{
    if (choices_)
        return;
    choices_ = bus_.subscribe({portal::service, portal::path, interface, "ActionInvoked", "(ssav)", {}},
                              [weak = weak_from_this()](const BusSignal &signal) {
                                  const char *identifier = nullptr;
                                  const char *key = nullptr;
                                  g_variant_get(signal.values.get(), "(&s&sav)", &identifier, &key, nullptr);
                                  if (const auto self = weak.lock())
                                      self->invoked(identifier, {key, activationTokenIn(signal.values)});
                              });
}

void PortalNotifications::invoked(const std::string &identifier, const Answer &answer)
{
    const auto found = open_.extract(identifier);
    if (!found.empty() && found.mapped())
        found.mapped()(answer);
}

} // namespace skyflare
