#include "platform/linux/BusConnection.h"

#include <gio/gunixfdlist.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

namespace skyflare {

namespace {

using GLibError = Handle<GError, &g_error_free>;
using GLibText = Handle<gchar, &g_free>;
using Done = std::function<void(GAsyncResult *)>;

gpointer box(Done done)
{
    return std::make_unique<Done>(std::move(done)).release();
}

void runDone(GObject * /*source*/, GAsyncResult *result, gpointer boxed)
{
    const std::unique_ptr<Done> done(static_cast<Done *>(boxed));
    (*done)(result);
}

/// Takes over the error. Its domain is its name on the bus, if it comes from there.
Error errorFrom(GError *error)
{
    const GLibError owned(error);
    const GLibText name(g_dbus_error_get_remote_error(error));
    g_dbus_error_strip_remote_error(error);
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CLOSED) == TRUE)
        return {std::string(BusConnection::noBus), error->code, error->message};
    return {name ? name.get() : g_quark_to_string(error->domain), error->code, error->message};
}

Result<std::string> addressFrom(GBusType type)
{
    GError *error = nullptr;
    const GLibText address(g_dbus_address_get_for_bus_sync(type, nullptr, &error));
    if (!address)
        return errorFrom(error);
    return std::string(address.get());
}

BusAnswer answerFrom(GVariant *values, GUnixFDList *files)
{
    BusAnswer answer{takeVariant(values), {}};
    if (files == nullptr)
        return answer;
    int count = 0;
    const std::unique_ptr<int[], Release<&g_free>> descriptors(g_unix_fd_list_steal_fds(files, &count));
    for (int index = 0; index < count; ++index)
        answer.files.push_back(std::make_shared<OpenFile>(descriptors[static_cast<std::size_t>(index)]));
    return answer;
}

/// Answers once. A call that nobody answers is let go of with the program.
BusConnection::Reply replyTo(GDBusMethodInvocation *invocation)
{
    const std::shared_ptr<GDBusMethodInvocation> owned(invocation, &g_object_unref);
    return [owned](const Result<Variant> &answer) {
        auto *const taken =
            static_cast<GDBusMethodInvocation *>(g_object_ref(owned.get())); // by what follows
        if (answer)
            g_dbus_method_invocation_return_value(taken, answer->get());
        else
            g_dbus_method_invocation_return_dbus_error(taken, answer.error().domain.c_str(),
                                                       answer.error().message.c_str());
    };
}

const char *orNull(const std::string &text)
{
    return text.empty() ? nullptr : text.c_str();
}

} // namespace

BusConnection::BusConnection(MessageBus::Kind kind, const MessageBus::Services &services)
    : kind_(kind), services_(services)
{
    if (services_.greeting)
        watchGreeted();
}

/// Heard before whoever else listens for that service: they are told by way of the queue.
void BusConnection::watchGreeted()
{
    constexpr std::uint64_t ownListener = 0; // nobody else's number
    constexpr const char *bus = "org.freedesktop.DBus";
    const auto say = [this](const BusCall &call, MessageBus::Answer answered) {
        send(call, std::move(answered));
    };
    greeted_.emplace(*services_.greeting, say, services_.console);
    const auto changed = [this](const BusSignal &signal) {
        const char *oldOwner = nullptr;
        const char *newOwner = nullptr;
        g_variant_get(signal.values.get(), "(&s&s&s)", nullptr, &oldOwner, &newOwner);
        greeted_->ownerChanged(oldOwner, newOwner);
    };
    listeners_[ownListener] = {
        {bus, "/org/freedesktop/DBus", bus, "NameOwnerChanged", "(sss)", services_.greeting->call.service},
        changed};
}

void BusConnection::call(BusCall call, MessageBus::Answer answer)
{
    if (!connection_) {
        waiting_.emplace_back(std::move(call), std::move(answer));
        connect();
    } else if (greeted_ && greeted_->holds(call)) {
        greeted_->whenGreeted([this, call = std::move(call), answer = std::move(answer)] {
            if (connection_)
                forward(call, answer);
            else
                this->call(call, answer); // on the next one
        });
    } else {
        forward(call, std::move(answer));
    }
}

void BusConnection::announce(const BusAnnouncement &announcement)
{
    if (connection_)
        g_dbus_connection_emit_signal(connection_.get(), nullptr, announcement.path.c_str(),
                                      announcement.interface.c_str(), announcement.signal.c_str(),
                                      announcement.values.get(), nullptr);
}

void BusConnection::subscribe(std::uint64_t id, BusSignalMatch match, MessageBus::Handler heard)
{
    Listener &listener = listeners_[id] = {std::move(match), std::move(heard)};
    if (connection_)
        listen(listener);
    else
        connect();
}

void BusConnection::offer(std::uint64_t id, const BusObject &object, Asked asked)
{
    Offer &offer = offers_[id] = {object.path,
                                  Description(g_dbus_node_info_new_for_xml(object.interfaces, nullptr)),
                                  std::move(asked),
                                  {}};
    if (connection_)
        publish(offer);
    else
        connect();
}

void BusConnection::watchLoss(std::uint64_t id, std::function<void()> lost)
{
    lossWatchers_[id] = std::move(lost);
}

void BusConnection::unsubscribe(std::uint64_t id)
{
    lossWatchers_.erase(id);
    if (auto offered = offers_.extract(id))
        withdraw(offered.mapped());
    const auto found = listeners_.extract(id);
    if (!found.empty() && found.mapped().registration != 0 && connection_)
        g_dbus_connection_signal_unsubscribe(connection_.get(), found.mapped().registration);
}

void BusConnection::close()
{
    g_cancellable_cancel(ending_.get());
    lossWatchers_.clear();
    if (greeted_)
        greeted_->forget();
    disconnect();
    listeners_.clear();
    offers_.clear();
}

// Deliberate: where the environment names no session bus none is started. It would be without a desktop, and
// would stay behind.
Result<std::string> BusConnection::address() const
{
    if (kind_ == MessageBus::Kind::System)
        return addressFrom(G_BUS_TYPE_SYSTEM);
    const auto usual = std::filesystem::path(g_get_user_runtime_dir()) / "bus";
    std::error_code failed;
    if (std::getenv("DBUS_SESSION_BUS_ADDRESS") == nullptr && !std::filesystem::exists(usual, failed))
        return Error{std::string(noBus), 0, "the environment names none"};
    return addressFrom(G_BUS_TYPE_SESSION);
}

// A connection of our own: GIO's shared one ends the process when the bus goes.
void BusConnection::connect()
{
    if (std::exchange(isConnecting_, true))
        return;
    const auto bus = address();
    if (!bus) {
        connected(bus.error());
        return;
    }
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    g_dbus_connection_new_for_address(bus->c_str(), flags, nullptr, ending_.get(), &runDone,
                                      box([self = shared_from_this()](GAsyncResult *result) {
                                          GError *error = nullptr;
                                          Connection connection(
                                              g_dbus_connection_new_for_address_finish(result, &error));
                                          if (connection)
                                              self->connected(std::move(connection));
                                          else
                                              self->connected(errorFrom(error));
                                      }));
}

void BusConnection::connected(Result<Connection> connection)
{
    isConnecting_ = false;
    auto waiting = std::exchange(waiting_, {});
    if (g_cancellable_is_cancelled(ending_.get()) == TRUE)
        return; // nobody listens any more
    if (!connection) {
        const std::string name = kind_ == MessageBus::Kind::Session ? "session" : "system";
        if (!std::exchange(isReported_, true))
            services_.console.reportLine("There is no " + name +
                                         " bus, and so none of its services: " + connection.error().message);
        for (auto &[call, answer] : waiting)
            deliver(std::move(answer), Error{std::string(noBus), 0, connection.error().message});
        reportLoss();
        return;
    }
    connection_ = std::move(*connection);
    const auto closed = +[](GDBusConnection *, gboolean, GError *, gpointer self) {
        static_cast<BusConnection *>(self)->disconnect();
    };
    g_signal_connect(connection_.get(), "closed", G_CALLBACK(closed), this);
    for (auto &[id, listener] : listeners_)
        listen(listener);
    for (auto &[id, offer] : offers_)
        publish(offer);
    for (auto &[call, answer] : waiting)
        this->call(std::move(call), std::move(answer));
}

void BusConnection::disconnect()
{
    if (!connection_)
        return;
    g_signal_handlers_disconnect_by_data(connection_.get(), this);
    for (auto &[id, listener] : listeners_)
        g_dbus_connection_signal_unsubscribe(connection_.get(), std::exchange(listener.registration, 0));
    for (auto &[id, offer] : offers_)
        withdraw(offer);
    connection_.reset();
    if (greeted_)
        greeted_->lose();
    reportLoss();
}

void BusConnection::reportLoss() const
{
    for (const auto &[id, lost] : lossWatchers_)
        lost();
}

void BusConnection::forward(const BusCall &call, MessageBus::Answer answer)
{
    send(call,
         [this, answer = std::move(answer)](const Result<BusAnswer> &result) { deliver(answer, result); });
}

void BusConnection::send(const BusCall &call, MessageBus::Answer answered)
{
    auto done = [self = shared_from_this(), connection = connection_.get(),
                 answered = std::move(answered)](GAsyncResult *result) {
        GError *error = nullptr;
        GUnixFDList *files = nullptr;
        GVariant *values =
            g_dbus_connection_call_with_unix_fd_list_finish(connection, &files, result, &error);
        const Handle<GUnixFDList, &g_object_unref> owned(files);
        if (values == nullptr)
            answered(errorFrom(error));
        else
            answered(answerFrom(values, files));
    };
    g_dbus_connection_call_with_unix_fd_list(
        connection_.get(), call.service.c_str(), call.path.c_str(), call.interface.c_str(),
        call.method.c_str(), call.arguments.get(), G_VARIANT_TYPE(call.answerType), G_DBUS_CALL_FLAGS_NONE,
        static_cast<int>(call.longestWait.count()), nullptr, ending_.get(), &runDone, box(std::move(done)));
}

void BusConnection::listen(Listener &listener)
{
    const BusSignalMatch &match = listener.match;
    const auto heard = +[](GDBusConnection *, const gchar *, const gchar *path, const gchar *, const gchar *,
                           GVariant *values, gpointer data) {
        const auto &[wanted, handler, registration] = *static_cast<Listener *>(data);
        if (g_variant_is_of_type(values, G_VARIANT_TYPE(wanted.type)) == TRUE)
            handler({path, takeVariant(g_variant_ref(values))});
    };
    const auto flags = match.firstArgumentIs == FirstArgument::Namespace
                           ? G_DBUS_SIGNAL_FLAGS_MATCH_ARG0_NAMESPACE
                           : G_DBUS_SIGNAL_FLAGS_NONE;
    listener.registration = g_dbus_connection_signal_subscribe(
        connection_.get(), orNull(match.service), orNull(match.interface), orNull(match.signal),
        orNull(match.path), orNull(match.firstArgument), flags, heard, &listener, nullptr);
}

void BusConnection::publish(Offer &offer)
{
    const auto called =
        +[](GDBusConnection *, const gchar *, const gchar *, const gchar *interface, const gchar *method,
            GVariant *arguments, GDBusMethodInvocation *invocation, gpointer data) {
            const auto &asked = static_cast<const Offer *>(data)->asked;
            asked({interface, method, takeVariant(g_variant_ref(arguments))}, replyTo(invocation));
        };
    static const GDBusInterfaceVTable table{called, nullptr, nullptr, {}};
    if (!offer.description)
        return;
    for (auto **interface = offer.description->interfaces; interface != nullptr && *interface != nullptr;
         ++interface)
        offer.registrations.push_back(g_dbus_connection_register_object(
            connection_.get(), offer.path.c_str(), *interface, &table, &offer, nullptr, nullptr));
}

void BusConnection::withdraw(Offer &offer)
{
    for (const guint registration : std::exchange(offer.registrations, {})) {
        if (registration != 0 && connection_)
            g_dbus_connection_unregister_object(connection_.get(), registration);
    }
}

void BusConnection::deliver(MessageBus::Answer answer, Result<BusAnswer> result) const
{
    if (g_cancellable_is_cancelled(ending_.get()) == FALSE)
        services_.queue.async([answer = std::move(answer), result = std::move(result)] { answer(result); });
}

} // namespace skyflare
