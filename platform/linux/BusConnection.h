#pragma once

#include "platform/base/Handle.h"
#include "platform/linux/GreetedService.h"
#include "platform/linux/MessageBus.h"

#include <gio/gio.h>

#include <cstdint>
#include <map>
#include <string_view>
#include <utility>

namespace skyflare {

/// What a MessageBus does on the platform thread: the connection, what waits for it, and who listens.
///
/// Threads: made and ended anywhere; the rest on the platform thread. Shares itself with the calls that GIO
/// still has to answer, and holds the thread until then.
class BusConnection : public std::enable_shared_from_this<BusConnection> {
public:
    /// The domain of the error when there is no bus.
    static constexpr std::string_view noBus = "bus";

    BusConnection(MessageBus::Kind kind, const MessageBus::Services &services);

    void call(BusCall call, MessageBus::Answer answer);
    void announce(const BusAnnouncement &announcement);
    /// @param heard  called on the platform thread
    void subscribe(std::uint64_t id, BusSignalMatch match, MessageBus::Handler heard);
    /// Takes the answer; any thread.
    using Reply = std::function<void(const Result<Variant> &)>;
    using Asked = std::function<void(const BusRequest &, Reply)>;
    /// @param asked  called on the platform thread; `object` has no function of its own
    void offer(std::uint64_t id, const BusObject &object, Asked asked);
    /// @param lost  called on the platform thread
    void watchLoss(std::uint64_t id, std::function<void()> lost);
    /// Ends any of the three.
    void unsubscribe(std::uint64_t id);
    /// What is still open is not answered. Nothing may follow.
    void close();

private:
    using Connection = Handle<GDBusConnection, &g_object_unref>;
    using Cancellable = Handle<GCancellable, &g_object_unref>;

    struct Listener {
        BusSignalMatch match;
        MessageBus::Handler heard;
        guint registration = 0; ///< 0: there is no connection
    };

    using Description = Handle<GDBusNodeInfo, &g_dbus_node_info_unref>;

    /// What others may call, one registration an interface.
    struct Offer {
        std::string path;
        Description description;
        Asked asked;
        std::vector<guint> registrations; ///< none: there is no connection
    };

    const MessageBus::Kind kind_;
    const MessageBus::Services services_;
    const std::shared_ptr<void> hold_ = services_.thread.hold();
    const Cancellable ending_{g_cancellable_new()};
    Connection connection_;
    bool isConnecting_ = false;
    bool isReported_ = false;
    std::vector<std::pair<BusCall, MessageBus::Answer>> waiting_; ///< for the connection
    std::map<std::uint64_t, Listener> listeners_;
    std::map<std::uint64_t, Offer> offers_;
    std::map<std::uint64_t, std::function<void()>> lossWatchers_;
    std::optional<GreetedService> greeted_;

    void connect();
    void connected(Result<Connection> connection);
    void disconnect();
    void watchGreeted();
    /// The answer goes to the queue.
    void forward(const BusCall &call, MessageBus::Answer answer);
    /// @param answered  called on the platform thread
    void send(const BusCall &call, MessageBus::Answer answered);
    void listen(Listener &listener);
    void reportLoss() const;
    void publish(Offer &offer);
    void withdraw(Offer &offer);
    void deliver(MessageBus::Answer answer, Result<BusAnswer> result) const;
    [[nodiscard]] Result<std::string> address() const;
};

} // namespace skyflare
