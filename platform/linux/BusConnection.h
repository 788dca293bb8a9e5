#pragma once

#include "platform/base/Handle.h"
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
    /// @param heard  called on the platform thread
    void subscribe(std::uint64_t id, BusSignalMatch match, MessageBus::Handler heard);
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

    const MessageBus::Kind kind_;
    const MessageBus::Services services_;
    const std::shared_ptr<void> hold_ = services_.thread.hold();
    const Cancellable ending_{g_cancellable_new()};
    Connection connection_;
    bool isConnecting_ = false;
    bool isReported_ = false;
    std::vector<std::pair<BusCall, MessageBus::Answer>> waiting_; ///< for the connection
    std::map<std::uint64_t, Listener> listeners_;

    void connect();
    void connected(Result<Connection> connection);
    void disconnect();
    void send(const BusCall &call, MessageBus::Answer answer);
    void listen(Listener &listener);
    void deliver(MessageBus::Answer answer, Result<BusAnswer> result) const;
    [[nodiscard]] Result<std::string> address() const;
};

} // namespace skyflare
