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

/// One who listens or serves. The connection knows it weakly.
template <typename Function> struct MessageBus::Subscribed {
    Function does;
    std::function<void()> end;

    Subscribed(Function wanted, std::function<void()> whenDone)
        : does(std::move(wanted)), end(std::move(whenDone))
    {
    }
    Subscribed(const Subscribed &) = delete;
    Subscribed &operator=(const Subscribed &) = delete;
    ~Subscribed() { end(); }
};

namespace {

std::uint64_t nextId()
{
    static std::atomic<std::uint64_t> lastId = 0;
    return ++lastId;
}

} // namespace

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

void MessageBus::announce(BusAnnouncement announcement)
{
    services_.thread.async([connection = connection_, announcement = std::move(announcement)] {
        connection->announce(announcement);
    });
}

template <typename Function>
std::shared_ptr<MessageBus::Subscribed<Function>> MessageBus::subscribed(std::uint64_t id, Function does)
{
    return std::make_shared<Subscribed<Function>>(
        std::move(does), [id, weak = std::weak_ptr(connection_), &thread = services_.thread] {
            if (auto connection = weak.lock())
                thread.async([id, connection = std::move(connection)] { connection->unsubscribe(id); });
        });
}

MessageBus::Subscription MessageBus::subscribe(BusSignalMatch match, Handler handler)
{
    const auto id = nextId();
    const auto listener = subscribed(id, std::move(handler));
    // On the queue it is heard by whoever still listens then.
    auto heard = [weak = std::weak_ptr(listener), &queue = services_.queue](const BusSignal &signal) {
        queue.async([weak, signal] {
            if (const auto listening = weak.lock())
                listening->does(signal);
        });
    };
    services_.thread.async([connection = connection_, id, match = std::move(match),
                            heard = std::move(heard)] { connection->subscribe(id, match, heard); });
    return listener;
}

MessageBus::Subscription MessageBus::offer(BusObject object)
{
    const auto id = nextId();
    const auto server = subscribed(id, std::exchange(object.serve, {}));
    auto asked = [weak = std::weak_ptr(server), &queue = services_.queue](const BusRequest &request,
                                                                          BusConnection::Reply reply) {
        queue.async([weak, request, reply = std::move(reply)] {
            if (const auto serving = weak.lock())
                reply(serving->does(request));
            else
                reply(Error{"org.freedesktop.DBus.Error.UnknownObject", 0, "it is not there any more"});
        });
    };
    services_.thread.async([connection = connection_, id, object = std::move(object),
                            asked = std::move(asked)] { connection->offer(id, object, asked); });
    return server;
}

MessageBus::Subscription MessageBus::watchLoss(std::function<void()> lost)
{
    const auto id = nextId();
    const auto watcher = subscribed(id, std::move(lost));
    auto isLost = [weak = std::weak_ptr(watcher), &queue = services_.queue] {
        queue.async([weak] {
            if (const auto watching = weak.lock())
                watching->does();
        });
    };
    services_.thread.async(
        [connection = connection_, id, isLost = std::move(isLost)] { connection->watchLoss(id, isLost); });
    return watcher;
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
