#include "platform/linux/MessageBus.h"

#include "platform/linux/BusConnection.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>
#include <utility>

namespace skyflare {

Variant takeVariant(_GVariant *value)
{
    return {g_variant_take_ref(value), &g_variant_unref};
}

bool isMissing(const Error &error)
{
    static constexpr std::array<std::string_view, 6> names{
        BusConnection::noBus,
        "org.freedesktop.DBus.Error.ServiceUnknown",
        "org.freedesktop.DBus.Error.NameHasNoOwner",
        "org.freedesktop.DBus.Error.UnknownObject",
        "org.freedesktop.DBus.Error.UnknownInterface",
        "org.freedesktop.DBus.Error.UnknownMethod",
    };
    constexpr std::string_view startsWithoutEffect = "org.freedesktop.DBus.Error.Spawn.";
    return std::ranges::find(names, error.domain) != names.end() ||
           error.domain.starts_with(startsWithoutEffect);
}

/// One who listens. The connection knows it weakly.
struct MessageBus::Subscribed {
    Handler handler;
    std::function<void()> end;

    Subscribed(Handler wanted, std::function<void()> whenDone)
        : handler(std::move(wanted)), end(std::move(whenDone))
    {
    }
    Subscribed(const Subscribed &) = delete;
    Subscribed &operator=(const Subscribed &) = delete;
    ~Subscribed() { end(); }
};

MessageBus::MessageBus(Kind kind, const Services &services)
    : services_(services), connection_(std::make_shared<BusConnection>(kind, services))
{
}

MessageBus::~MessageBus()
{
    services_.thread.async([connection = std::move(connection_)] { connection->close(); });
}

void MessageBus::call(BusCall call, Answer answer)
{
    services_.thread.async([connection = connection_, call = std::move(call), answer = std::move(answer)] {
        connection->call(call, answer);
    });
}

MessageBus::Subscription MessageBus::subscribe(BusSignalMatch match, Handler handler)
{
    static std::atomic<std::uint64_t> lastId = 0;
    const auto id = ++lastId;
    const auto subscribed = std::make_shared<Subscribed>(
        std::move(handler), [id, weak = std::weak_ptr(connection_), &thread = services_.thread] {
            if (auto connection = weak.lock())
                thread.async([id, connection = std::move(connection)] { connection->unsubscribe(id); });
        });
    // On the queue it is heard by whoever still listens then.
    auto heard = [weak = std::weak_ptr(subscribed), &queue = services_.queue](const BusSignal &signal) {
        queue.async([weak, signal] {
            if (const auto listening = weak.lock())
                listening->handler(signal);
        });
    };
    services_.thread.async([connection = connection_, id, match = std::move(match),
                            heard = std::move(heard)] { connection->subscribe(id, match, heard); });
    return subscribed;
}

MessageBus::Subscription MessageBus::watch(const std::string &service,
                                           std::function<void(bool isThere)> changed)
{
    constexpr const char *bus = "org.freedesktop.DBus";
    return subscribe({bus, "/org/freedesktop/DBus", bus, "NameOwnerChanged", "(sss)", service},
                     [changed = std::move(changed)](const BusSignal &signal) {
                         const char *newOwner = nullptr;
                         g_variant_get_child(signal.values.get(), 2, "&s", &newOwner);
                         changed(*newOwner != '\0');
                     });
}

} // namespace skyflare
