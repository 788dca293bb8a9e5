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
constexpr std::size_t mostWaiting = 16;
constexpr std::uint32_t noNumber = 0;

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

bool has(const std::vector<std::string> &capabilities, const char *wanted)
{
    return std::ranges::find(capabilities, wanted) != capabilities.end();
}

std::string escaped(const std::string &text)
{
    const Handle<gchar, &g_free> markup(g_markup_escape_text(text.c_str(), -1));
    return markup.get();
}

GVariant *hintsFor(const NotificationBoard::Content &content, const std::string &desktopEntry)
{
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    const auto add = [&](const char *name, GVariant *value) {
        g_variant_builder_add(&hints, "{sv}", name, value);
    };
    add("desktop-entry", g_variant_new_string(desktopEntry.c_str()));
    if (content.sound == NotificationBoard::Sound::NewMessage)
        add("sound-name", g_variant_new_string("message-new-instant"));
    else if (content.sound == NotificationBoard::Sound::None)
        add("suppress-sound", g_variant_new_boolean(TRUE));
    constexpr std::uint8_t low = 0; // desktops that have a list show no banner for these
    if (content.place == NotificationBoard::Place::BannerOnly)
        add("transient", g_variant_new_boolean(TRUE));
    else if (content.place == NotificationBoard::Place::ListOnly)
        add("urgency", g_variant_new_byte(low));
    return g_variant_builder_end(&hints);
}

} // namespace

void DesktopNotifications::askWhetherThere(Shown answered)
{
    askCapabilities([answered = std::move(answered)](const Result<Capabilities> &capabilities) {
        answered(capabilities ? Result<>() : Result<>(capabilities.error()));
    });
}

void DesktopNotifications::askCapabilities(std::function<void(const Result<Capabilities> &)> answered)
{
    bus_.call({service, path, service, "GetCapabilities", {}, "(as)"},
              [answered = std::move(answered)](const Result<BusAnswer> &answer) {
                  if (answer)
                      answered(textsIn(answer->values));
                  else
                      answered(answer.error());
              });
}

void DesktopNotifications::show(Content content, Shown shown, Chosen chosen)
{
    listen();
    if (waiting_.size() == mostWaiting) {
        shown(Error{"notifications", 0, "the desktop does not keep up with the notifications"});
        return;
    }
    waiting_.push_back({std::move(content), std::move(shown), std::move(chosen)});
    if (waiting_.size() == 1)
        begin();
}

void DesktopNotifications::begin()
{
    askCapabilities([weak = weak_from_this()](const Result<Capabilities> &capabilities) {
        const auto self = weak.lock();
        if (!self)
            return;
        if (capabilities)
            self->notify(*capabilities);
        else
            self->finish(capabilities.error());
    });
}

void DesktopNotifications::notify(const Capabilities &capabilities)
{
    const Content &content = waiting_.front().content;
    if (!content.actions.empty() && content.choice == Choice::Needed && !has(capabilities, "actions")) {
        finish(Error{"notifications", 0, "the desktop's notifications cannot be chosen"});
        return;
    }
    bus_.call({service, path, service, "Notify", argumentsOf(content, capabilities), "(u)"},
              [weak = weak_from_this()](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  if (!answer) {
                      self->finish(answer.error());
                      return;
                  }
                  std::uint32_t id = noNumber;
                  g_variant_get(answer->values.get(), "(u)", &id);
                  self->finish(id);
              });
}

void DesktopNotifications::finish(const Result<std::uint32_t> &id)
{
    Request done = std::move(waiting_.front());
    waiting_.pop_front();
    if (id) {
        open_.erase(numberOf(done.content.identifier));
        open_[*id] = {std::move(done.content.identifier), std::move(done.chosen)};
    }
    if (!waiting_.empty())
        begin();
    done.shown(id ? Result<>() : Result<>(id.error()));
}

Variant DesktopNotifications::argumentsOf(const Content &content, const Capabilities &capabilities) const
{
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    if (has(capabilities, "actions")) {
        for (const Action &action : content.actions) {
            g_variant_builder_add(&actions, "s", action.key.c_str());
            g_variant_builder_add(&actions, "s", action.title.c_str());
        }
    }
    const std::string body = has(capabilities, "body-markup") ? escaped(content.body) : content.body;
    constexpr std::int32_t usualTime = -1;
    return takeVariant(g_variant_new("(susssas@a{sv}i)", appName, numberOf(content.identifier),
                                     desktopEntry_.c_str(),
                                     content.summary.empty() ? appName : content.summary.c_str(),
                                     body.c_str(), &actions, hintsFor(content, desktopEntry_), usualTime));
}

std::uint32_t DesktopNotifications::numberOf(const std::string &identifier) const
{
    const auto isOfIt = [&](const auto &one) { return one.second.identifier == identifier; };
    const auto found = identifier.empty() ? open_.end() : std::ranges::find_if(open_, isOfIt);
    return found == open_.end() ? noNumber : found->first;
}

void DesktopNotifications::remove(const std::string &identifier)
{
    const std::uint32_t id = numberOf(identifier);
    if (open_.erase(id) != 0)
        bus_.call({service, path, service, "CloseNotification", takeVariant(g_variant_new("(u)", id))},
                  [](const Result<BusAnswer> & /*answer*/) {}); // it may have gone by itself
}

void DesktopNotifications::listen()
{
    if (!subscriptions_.empty())
        return;
    const auto weak = weak_from_this();
    subscriptions_.push_back(bus_.subscribe({service, path, service, "ActionInvoked", "(us)", {}},
                                            [weak](const BusSignal &signal) {
                                                std::uint32_t id = noNumber;
                                                const char *key = nullptr;
                                                g_variant_get(signal.values.get(), "(u&s)", &id, &key);
                                                if (const auto self = weak.lock())
                                                    self->invoked(id, key);
                                            }));
    subscriptions_.push_back(bus_.subscribe({service, path, service, "ActivationToken", "(us)", {}},
                                            [weak](const BusSignal &signal) {
                                                std::uint32_t id = noNumber;
                                                const char *token = nullptr;
                                                g_variant_get(signal.values.get(), "(u&s)", &id, &token);
                                                const auto self = weak.lock();
                                                if (self && self->open_.contains(id))
                                                    self->open_[id].activationToken = token;
                                            }));
    subscriptions_.push_back(bus_.subscribe({service, path, service, "NotificationClosed", "(uu)", {}},
                                            [weak](const BusSignal &signal) {
                                                std::uint32_t id = noNumber;
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
    if (!found.empty() && found.mapped().chosen)
        found.mapped().chosen({key, found.mapped().activationToken});
}

} // namespace skyflare
