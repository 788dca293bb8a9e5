#include "platform/camera/PipeWireServer.h"

#include <gio/gunixsocketaddress.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace skyflare {

namespace {

std::string environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

/// Where PipeWire's own clients look for the server, in their order.
std::vector<std::string> socketPaths()
{
    const std::string remote = environment("PIPEWIRE_REMOTE");
    const std::string name = remote.empty() ? "pipewire-0" : remote;
    if (name.starts_with('/'))
        return {name};
    std::vector<std::string> paths;
    for (const std::string &folder : {environment("PIPEWIRE_RUNTIME_DIR"), environment("XDG_RUNTIME_DIR"),
                                      std::string("/run/pipewire")}) {
        if (!folder.empty())
            paths.push_back(std::filesystem::path(folder) / name);
    }
    return paths;
}

} // namespace

std::optional<PipeWireServer> PipeWireServer::connect()
{
    for (const std::string &path : socketPaths()) {
        const Handle<GSocketAddress, &g_object_unref> address(g_unix_socket_address_new(path.c_str()));
        Socket socket(
            g_socket_new(G_SOCKET_FAMILY_UNIX, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_DEFAULT, nullptr));
        if (socket && g_socket_connect(socket.get(), address.get(), nullptr, nullptr))
            return PipeWireServer(std::move(socket));
    }
    return {};
}

bool PipeWireServer::waitForEndOr(GPollFD other)
{
    // Only the end counts: the server may say something to a client that says nothing.
    std::array<GPollFD, 2> waiting{other, {g_socket_get_fd(socket_.get()), 0, 0}};
    g_poll(waiting.data(), waiting.size(), -1);
    return (waiting[1].revents & (G_IO_HUP | G_IO_ERR | G_IO_NVAL)) == 0;
}

} // namespace skyflare
