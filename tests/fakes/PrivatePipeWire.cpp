#include "tests/fakes/PrivatePipeWire.h"

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace skyflare {

namespace {

/// The daemon with what video needs of it; it says when its clients may come.
constexpr std::string_view daemonConfiguration = R"(
context.properties = { core.daemon = true core.name = pipewire-0 }
context.spa-libs = { support.* = support/libspa-support }
context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-access }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
    { name = libpipewire-module-session-manager }
]
context.objects = [
    { factory = spa-node-factory args = {
        factory.name = support.node.driver node.name = Dummy-Driver
        node.group = pipewire.dummy priority.driver = 20000 } }
]
context.exec = [ { path = "echo" args = "ready" } ]
)";

/// The scripts that link streams to cameras, as the session manager ships them, without those that look for
/// hardware and ask D-Bus.
constexpr std::string_view sessionConfiguration = R"(
context.properties = { wireplumber.script-engine = lua-scripting }
context.spa-libs = { support.* = support/libspa-support }
context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-session-manager }
]
wireplumber.components = [
    { name = libwireplumber-module-lua-scripting, type = module }
    { name = libwireplumber-module-metadata, type = module }
    { name = libwireplumber-module-default-nodes, type = module }
    { name = libwireplumber-module-default-nodes-api, type = module }
    { name = libwireplumber-module-si-node, type = module }
    { name = libwireplumber-module-si-standard-link, type = module }
    { name = libwireplumber-module-si-audio-endpoint, type = module }
    { name = access/access-default.lua, type = script/lua }
    { name = create-item.lua, type = script/lua }
    { name = policy-node.lua, type = script/lua }
    { name = ready.lua, type = script/lua }
]
)";

/// Starts a program and waits until it prints "ready".
std::unique_ptr<ChildProcess> startAndWait(const std::vector<std::string> &command)
{
    auto process = std::make_unique<ChildProcess>(command);
    if (!process->waitForOutput(std::chrono::seconds(60)) || process->readLine() != "ready") {
        process->kill();
        throw std::runtime_error(command[0] + " does not come up: " + process->errors());
    }
    return process;
}

} // namespace

PrivatePipeWire::PrivatePipeWire()
{
    enterEnvironment();
    folder_.write("daemon.conf", daemonConfiguration);
    folder_.write("session.conf", sessionConfiguration);
    folder_.write("wireplumber/scripts/ready.lua", "print(\"ready\")\n");
    start();
}

void PrivatePipeWire::start()
{
    daemon_ = startAndWait({"pipewire", "-c", (folder_ / "daemon.conf").string()});
    sessionManager_ = startAndWait({"wireplumber", "-c", (folder_ / "session.conf").string()});
}

void PrivatePipeWire::enterEnvironment() const
{
    for (const char *name : {"XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "PIPEWIRE_RUNTIME_DIR"})
        setenv(name, folder_.path().c_str(), 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (folder_ / "no-bus").string()).c_str(), 1);
    for (const char *name : {"PIPEWIRE_REMOTE", "PIPEWIRE_CORE", "PIPEWIRE_CONFIG_DIR",
                             "PIPEWIRE_CONFIG_PREFIX", "PIPEWIRE_PROPS", "WIREPLUMBER_CONFIG_DIR"})
        unsetenv(name);
}

std::unique_ptr<ChildProcess> PrivatePipeWire::camera(const std::string &name, const Pictures &pictures) const
{
    return startAndWait({PIPEWIRE_CAMERA, name, pictures.format, std::to_string(pictures.width),
                         std::to_string(pictures.height), std::to_string(pictures.rate), pictures.file});
}

} // namespace skyflare
