#pragma once

#include "platform/base/Handle.h"

#include <gio/gio.h>

#include <optional>

namespace skyflare {

/// A connection that says nothing and lasts as long as PipeWire's server: GStreamer's provider does not
/// notice when the server dies, shows its devices for ever, and never finds the next server.
///
/// Threads: one.
class PipeWireServer {
public:
    /// Nothing while no server is running.
    static std::optional<PipeWireServer> connect();

    /// Waits for one of the two. @return whether the server still lives
    [[nodiscard]] bool waitForEndOr(GPollFD other);

private:
    using Socket = Handle<GSocket, &g_object_unref>;

    explicit PipeWireServer(Socket socket) : socket_(std::move(socket)) {}

    Socket socket_;
};

} // namespace skyflare
