#include "tests/fakes/PrivateBus.h"

#include "platform/base/Handle.h"

#include <gio/gio.h>
#include <gio/gunixfdlist.h>

#include <algorithm>
#include <cstdlib>

namespace skyflare {

PrivateBus::PrivateBus()
{
    const std::string file = (folder_ / "bus.conf").string();
    folder_.write("bus.conf",
                  "<busconfig><type>session</type><listen>unix:dir=" + folder_.path().string() +
                      "</listen><servicedir>" + (folder_ / "services").string() +
                      "</servicedir><auth>EXTERNAL</auth>"
                      "<limit name='service_start_timeout'>120000</limit><policy context='default'>"
                      "<allow send_destination='*'/><allow receive_sender='*'/>"
                      "<allow own='*'/></policy></busconfig>");
    daemon_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--config-file", file, "--nofork", "--print-address"});
    address_ = daemon_->readLine().value_or("");
    setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", address_.c_str(), 1);
}

void PrivateBus::addService(const std::string &name, const std::string &command) const
{
    folder_.write("services/" + name + ".service",
                  "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
}

FakeBusService::FakeBusService(const PrivateBus &bus, const std::string &name, PumpedQueue &queue)
    : queue_(queue)
{
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    connection_ = {
        g_dbus_connection_new_for_address_sync(bus.address().c_str(), flags, nullptr, nullptr, nullptr),
        &g_object_unref};
    // On a thread of GLib's: the calls are handed to the test's.
    const auto filter = +[](GDBusConnection *, GDBusMessage *message, gboolean isIncoming, gpointer self) {
        if (isIncoming == FALSE ||
            g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
            return message;
        const auto *service = static_cast<FakeBusService *>(self);
        const std::shared_ptr<GDBusMessage> call(message, &g_object_unref);
        service->queue_.async([weak = std::weak_ptr(service->self_), call] {
            if (const auto called = weak.lock())
                (*called)->serve(call);
        });
        return static_cast<GDBusMessage *>(nullptr);
    };
    g_dbus_connection_add_filter(connection_.get(), filter, this, nullptr);
    askBus("RequestName", g_variant_new("(su)", name.c_str(), 0U));
}

FakeBusService::~FakeBusService()
{
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

void FakeBusService::askBus(const char *method, _GVariant *arguments) const
{
    constexpr const char *bus = "org.freedesktop.DBus";
    g_variant_unref(g_dbus_connection_call_sync(connection_.get(), bus, "/", bus, method, arguments, nullptr,
                                                G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, nullptr));
}

void FakeBusService::on(const std::string &method, const char *answer)
{
    on(method, [answer](auto) { return Reply{g_variant_new_parsed(answer)}; });
}

void FakeBusService::emit(const std::string &path, const std::string &interface, const std::string &signal,
                          _GVariant *values) const
{
    g_dbus_connection_emit_signal(connection_.get(), nullptr, path.c_str(), interface.c_str(), signal.c_str(),
                                  values, nullptr);
}

void FakeBusService::send(const std::string &service, const std::string &path, const std::string &interface,
                          const std::string &method, _GVariant *arguments) const
{
    g_dbus_connection_call(connection_.get(), service.c_str(), path.c_str(), interface.c_str(),
                           method.c_str(), arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr,
                           nullptr);
    askBus("GetId", nullptr);
}

std::size_t FakeBusService::count(const std::string &method) const
{
    const auto isOfIt = [&](const std::string &call) { return call.starts_with(method + " "); };
    return static_cast<std::size_t>(std::ranges::count_if(calls_, isOfIt));
}

void FakeBusService::serve(const std::shared_ptr<_GDBusMessage> &call)
{
    GVariant *arguments = g_dbus_message_get_body(call.get());
    const std::string method = g_dbus_message_get_member(call.get());
    const auto known = methods_.find(method);
    if (known == methods_.end()) {
        reply(call.get(), {.error = "org.freedesktop.DBus.Error.UnknownMethod"});
        return;
    }
    const Handle<gchar, &g_free> text(arguments != nullptr ? g_variant_print(arguments, FALSE)
                                                           : g_strdup("()"));
    calls_.push_back(method + " " + text.get());
    const Reply answer = known->second(arguments);
    if (answer.values == nullptr && answer.error.empty())
        silenced_ = call;
    else
        reply(call.get(), answer);
}

void FakeBusService::reply(_GDBusMessage *call, const Reply &reply) const
{
    const Handle<GDBusMessage, &g_object_unref> answer(
        reply.values != nullptr
            ? g_dbus_message_new_method_reply(call)
            : g_dbus_message_new_method_error_literal(call, reply.error.c_str(), "as the test wants it"));
    if (reply.values != nullptr)
        g_dbus_message_set_body(answer.get(), reply.values);
    if (reply.file >= 0) {
        const Handle<GUnixFDList, &g_object_unref> files(g_unix_fd_list_new_from_array(&reply.file, 1));
        g_dbus_message_set_unix_fd_list(answer.get(), files.get());
    }
    g_dbus_connection_send_message(connection_.get(), answer.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
}

} // namespace skyflare
