#include "platform/linux/UnifiedPushDistributors.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace skyflare {

namespace {

constexpr const char *bus = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";
constexpr const char *distributors = "org.unifiedpush.Distributor";
constexpr const char *path = "/org/unifiedpush/Distributor";
constexpr const char *listRunning = "ListNames";
constexpr const char *listStartable = "ListActivatableNames";

struct Reason {
    std::string_view name;
    std::string_view meaning;
};
constexpr std::array<Reason, 5> reasons{{
    {"INTERNAL_ERROR", "has failed"},
    {"NETWORK", "cannot reach its server"},
    {"ACTION_REQUIRED", "waits for you: open its settings"},
    {"VAPID_REQUIRED", "takes signed messages alone, and Skyflare's senders do not sign"},
    {"UNAUTHORIZED", "does not let Skyflare register"},
}};

Error failure(const std::string &name, std::string_view meaning)
{
    return {"push", 0, name + " " + std::string(meaning)};
}

/// What a distributor has answered.
Result<> outcome(const std::string &name, std::string_view success, const std::string &reason)
{
    if (success == "REGISTRATION_SUCCEEDED")
        return {};
    const auto known = std::ranges::find(reasons, reason, &Reason::name);
    return known != reasons.end() ? failure(name, known->meaning)
                                  : failure(name, "refuses, and gives no reason that is known");
}

/// Why there was no answer.
Error noAnswer(const std::string &name, const Error &error)
{
    if (error.domain == "g-io-error-quark") // the bus's own limit of time
        return failure(name, "does not answer");
    return failure(name, "cannot be asked: " + error.message);
}

bool isOfVersion1(const Error &error)
{
    static constexpr std::array<std::string_view, 3> names{
        "org.freedesktop.DBus.Error.UnknownMethod",
        "org.freedesktop.DBus.Error.UnknownInterface",
        "org.freedesktop.DBus.Error.UnknownObject",
    };
    return std::ranges::find(names, error.domain) != names.end();
}

void addDistributors(std::vector<std::string> &names, const Variant &answer)
{
    const Variant list = takeVariant(g_variant_get_child_value(answer.get(), 0));
    const std::string prefix = std::string(distributors) + ".";
    for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
        const char *name = nullptr;
        g_variant_get_child(list.get(), i, "&s", &name);
        if (std::string_view(name).starts_with(prefix))
            names.emplace_back(name);
    }
}

Variant argumentsOf(const UnifiedPushDistributors::Registration &registration)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    const auto add = [&](const char *name, const std::string &text) {
        g_variant_builder_add(&builder, "{sv}", name, g_variant_new_string(text.c_str()));
    };
    add("service", registration.service);
    add("token", registration.token);
    add("description", registration.description);
    return takeVariant(g_variant_new("(a{sv})", &builder));
}

Result<> outcomeOfVersion2(const std::string &name, const Variant &answer)
{
    const Variant values = takeVariant(g_variant_get_child_value(answer.get(), 0));
    const char *success = "";
    const char *reason = "";
    g_variant_lookup(values.get(), "success", "&s", &success);
    g_variant_lookup(values.get(), "reason", "&s", &reason);
    return outcome(name, success, reason);
}

} // namespace

void UnifiedPushDistributors::find(Found found)
{
    list(listRunning, {}, std::move(found));
}

void UnifiedPushDistributors::list(const char *method, std::vector<std::string> names, Found found)
{
    bus_.call({bus, busPath, bus, method, {}, "(as)"},
              [weak = weak_from_this(), method, names = std::move(names),
               found = std::move(found)](const Result<BusAnswer> &answer) mutable {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  if (!answer) {
                      found(answer.error());
                      return;
                  }
                  addDistributors(names, answer->values);
                  if (method == listRunning) {
                      self->list(listStartable, std::move(names), std::move(found));
                      return;
                  }
                  std::ranges::sort(names);
                  names.erase(std::unique(names.begin(), names.end()), names.end());
                  found(std::move(names));
              });
}

void UnifiedPushDistributors::registerWith(const std::string &name, const Registration &registration,
                                           Registered registered)
{
    bus_.call({name, path, "org.unifiedpush.Distributor2", "Register", argumentsOf(registration), "(a{sv})"},
              [weak = weak_from_this(), name, registration,
               registered = std::move(registered)](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  if (answer)
                      registered(outcomeOfVersion2(name, answer->values));
                  else if (isOfVersion1(answer.error()))
                      self->registerByVersion1(name, registration, registered);
                  else
                      registered(noAnswer(name, answer.error()));
              });
}

void UnifiedPushDistributors::registerByVersion1(const std::string &name, const Registration &registration,
                                                 Registered registered)
{
    bus_.call(
        {name, path, "org.unifiedpush.Distributor1", "Register",
         takeVariant(g_variant_new("(sss)", registration.service.c_str(), registration.token.c_str(),
                                   registration.description.c_str())),
         "(ss)"},
        [weak = weak_from_this(), name, registered = std::move(registered)](const Result<BusAnswer> &answer) {
            if (!weak.lock())
                return;
            if (!answer) {
                registered(noAnswer(name, answer.error()));
                return;
            }
            const char *success = nullptr;
            const char *reason = nullptr;
            g_variant_get(answer->values.get(), "(&s&s)", &success, &reason);
            registered(outcome(name, success, reason));
        });
}

MessageBus::Subscription
UnifiedPushDistributors::watch(std::function<void(const std::string &name)> appeared) const
{
    return bus_.subscribe({.service = bus,
                           .path = busPath,
                           .interface = bus,
                           .signal = "NameOwnerChanged",
                           .type = "(sss)",
                           .firstArgument = distributors,
                           .firstArgumentIs = FirstArgument::Namespace},
                          [appeared = std::move(appeared)](const BusSignal &signal) {
                              const char *name = nullptr;
                              const char *newOwner = nullptr;
                              g_variant_get(signal.values.get(), "(&s&s&s)", &name, nullptr, &newOwner);
                              if (*newOwner != '\0')
                                  appeared(name);
                          });
}

} // namespace skyflare
