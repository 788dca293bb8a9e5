#include "platform/linux/LogindSession.h"

#include <gio/gio.h>

#include <utility>

namespace skyflare {

namespace {

constexpr const char *logind = "org.freedesktop.login1";
constexpr const char *managerPath = "/org/freedesktop/login1";
constexpr const char *manager = "org.freedesktop.login1.Manager";
constexpr const char *session = "org.freedesktop.login1.Session";

} // namespace

void LogindSession::observe(Handlers handlers)
{
    handlers_ = std::move(handlers);
    const auto weak = weak_from_this();
    subscriptions_.push_back(bus_.subscribe({logind, managerPath, manager, "PrepareForSleep", "(b)", {}},
                                            [weak](const BusSignal &signal) {
                                                gboolean sleeps = FALSE;
                                                g_variant_get(signal.values.get(), "(b)", &sleeps);
                                                if (const auto self = weak.lock())
                                                    self->sleepChanged(sleeps == TRUE);
                                            }));
    subscriptions_.push_back(bus_.watch(logind, [weak](bool isThere) {
        if (const auto self = weak.lock(); self && isThere)
            self->didWake();
    }));
    // "auto": ours, or, for a program that a service manager has started, the one on this user's display.
    bus_.call({logind, managerPath, manager, "GetSession", takeVariant(g_variant_new("(s)", "auto")), "(o)"},
              [weak](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self || !answer)
                      return; // nobody has logged in: nobody locks
                  const char *path = nullptr;
                  g_variant_get(answer->values.get(), "(&o)", &path);
                  self->observeLock(path);
              });
    takeDelay();
}

void LogindSession::takeDelay()
{
    const auto arguments =
        g_variant_new("(ssss)", "sleep", "Skyflare", "A run ends and its photos are stored", "delay");
    bus_.call({logind, managerPath, manager, "Inhibit", takeVariant(arguments), "(h)"},
              [weak = weak_from_this()](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  if (answer && !answer->files.empty() && !self->isAsleep_)
                      self->delay_ = answer->files.front();
                  else if (!answer && !isMissing(answer.error()) && !std::exchange(self->isReported_, true))
                      self->console_.reportLine("The machine may sleep before a run has ended: " +
                                                answer.error().message);
              });
}

void LogindSession::observeLock(const std::string &path)
{
    const auto weak = weak_from_this();
    const auto observe = [&](const char *signal, std::function<void()> Handlers::*handler) {
        subscriptions_.push_back(bus_.subscribe({logind, path, session, signal, "()", {}},
                                                [weak, handler](const BusSignal & /*signal*/) {
                                                    if (const auto self = weak.lock())
                                                        (self->handlers_.*handler)();
                                                }));
    };
    observe("Lock", &Handlers::didLock);
    observe("Unlock", &Handlers::didUnlock);
    subscriptions_.push_back(bus_.subscribe(
        {logind, path, "org.freedesktop.DBus.Properties", "PropertiesChanged", "(sa{sv}as)", session},
        [weak](const BusSignal &signal) {
            if (const auto self = weak.lock())
                self->propertiesChanged(signal.values);
        }));
}

void LogindSession::sleepChanged(bool sleeps)
{
    isAsleep_ = sleeps;
    if (sleeps)
        handlers_.willSleep(std::exchange(delay_, {}));
    else
        didWake();
}

void LogindSession::didWake()
{
    isAsleep_ = false;
    takeDelay();
    handlers_.didWake();
}

void LogindSession::propertiesChanged(const Variant &values)
{
    const Variant changed = takeVariant(g_variant_get_child_value(values.get(), 1));
    gboolean isLocked = FALSE;
    if (g_variant_lookup(changed.get(), "LockedHint", "b", &isLocked) == TRUE)
        (isLocked == TRUE ? handlers_.didLock : handlers_.didUnlock)();
}

} // namespace skyflare
