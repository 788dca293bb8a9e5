#include "collector/CollectorServer.h"

#include "collector/SlowClients.h"
#include "platform/base/Handle.h"
#include "platform/base/Text.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string_view>

namespace skyflare {

namespace {

using Daemon = Handle<MHD_Daemon, &MHD_stop_daemon>;
using Response = Handle<MHD_Response, &MHD_destroy_response>;

constexpr std::string_view collectPath = "/a";
constexpr std::string_view settingsPath = "/config/app/";
constexpr std::string_view healthPath = "/health";
constexpr const char *plainText = "text/plain; charset=utf-8";
constexpr const char *json = "application/json";
constexpr std::chrono::seconds longestStop{5};

struct Answer {
    unsigned status = MHD_HTTP_OK;
    std::string body;
    const char *type = plainText;
    const char *allow = nullptr; ///< the method that would be right
};

/// A request from its head to its answer.
struct Exchange {
    SlowClients::Client *client = nullptr;
    Collector::Request request;
    std::optional<Answer> answer;
};

/// Where to listen.
struct SocketAddress {
    sockaddr_in v4{};
    sockaddr_in6 v6{};
    bool isV6 = false;

    static std::optional<SocketAddress> of(const std::string &address, std::uint16_t port)
    {
        SocketAddress result;
        result.v4.sin_family = AF_INET;
        result.v4.sin_port = htons(port);
        result.v6.sin6_family = AF_INET6;
        result.v6.sin6_port = htons(port);
        result.isV6 = inet_pton(AF_INET6, address.c_str(), &result.v6.sin6_addr) == 1;
        if (!result.isV6 && inet_pton(AF_INET, address.c_str(), &result.v4.sin_addr) != 1)
            return {};
        return result;
    }
    [[nodiscard]] const sockaddr *pointer() const
    {
        return isV6 ? reinterpret_cast<const sockaddr *>(&v6) : reinterpret_cast<const sockaddr *>(&v4);
    }
};

std::string_view header(MHD_Connection *connection, const char *name)
{
    const char *const value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    return value ? withoutOuterSpace(value) : std::string_view();
}

/// What the head says of the body's length; nothing where it says nothing.
std::optional<std::uint64_t> announcedBytes(MHD_Connection *connection)
{
    const std::string_view text = header(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
    std::uint64_t bytes = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), bytes).ec != std::errc{})
        return {};
    return bytes;
}

std::optional<Collector::Packing> packingNamed(std::string_view encoding)
{
    if (encoding.empty() || isSameInAnyCase(encoding, "identity"))
        return Collector::Packing::Plain;
    if (isSameInAnyCase(encoding, "gzip"))
        return Collector::Packing::Gzip;
    return {};
}

MHD_Result reply(MHD_Connection *connection, const Answer &answer)
{
    // Deliberate: the library takes a pointer that it may write to, and with this mode never does.
    const Response response(MHD_create_response_from_buffer(
        answer.body.size(), const_cast<char *>(answer.body.data()), MHD_RESPMEM_MUST_COPY));
    if (!response)
        return MHD_NO;
    if (!answer.body.empty())
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, answer.type);
    if (answer.allow)
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ALLOW, answer.allow);
    return MHD_queue_response(connection, answer.status, response.get());
}

} // namespace

/// Threads: all but the options belong to the library's thread, or lock.
struct CollectorServer::State {
    State(const Services &itsServices, Options itsOptions)
        : services(itsServices), options(std::move(itsOptions))
    {
    }

    const Services services;
    const Options options;
    SlowClients slowClients;
    std::mutex mutex;
    std::condition_variable changed;
    int underWay = 0; ///< requests from head to answer; guarded by mutex
    std::atomic<bool> isStopping = false;
    Daemon daemon; // last: it calls what stands above

    [[nodiscard]] std::optional<Answer> answerAtOnce(MHD_Connection *connection, std::string_view path,
                                                     std::string_view method) const;
    [[nodiscard]] std::optional<Answer> refusal(MHD_Connection *connection) const;
    [[nodiscard]] Answer settings(std::string_view app) const;
    [[nodiscard]] Answer health() const;
    MHD_Result begin(MHD_Connection *connection, std::string_view path, std::string_view method, void **own);
    MHD_Result receive(Exchange &exchange, const char *bytes, std::size_t *count) const;
    MHD_Result collect(MHD_Connection *connection, Exchange &exchange);
    void end(Exchange *exchange);
    [[nodiscard]] bool start(const SocketAddress &address);
};

std::optional<Answer> CollectorServer::State::answerAtOnce(MHD_Connection *connection, std::string_view path,
                                                           std::string_view method) const
{
    const bool collects = path == collectPath;
    const bool isKnown = collects || path == healthPath || path.starts_with(settingsPath);
    if (!isKnown)
        return Answer{.status = MHD_HTTP_NOT_FOUND, .body = "there is nothing here\n"};
    const bool isReading = method == MHD_HTTP_METHOD_GET || method == MHD_HTTP_METHOD_HEAD;
    if (collects ? method != MHD_HTTP_METHOD_POST : !isReading)
        return Answer{.status = MHD_HTTP_METHOD_NOT_ALLOWED,
                      .body = "not with this method\n",
                      .allow = collects ? "POST" : "GET, HEAD"};
    if (collects)
        return refusal(connection);
    return path == healthPath ? health() : settings(path.substr(settingsPath.size()));
}

/// Of what is to be collected: nothing where it may come.
std::optional<Answer> CollectorServer::State::refusal(MHD_Connection *connection) const
{
    if (announcedBytes(connection).value_or(0) > options.bodyBytes)
        return Answer{.status = MHD_HTTP_CONTENT_TOO_LARGE, .body = "the body is too long\n"};
    if (!packingNamed(header(connection, MHD_HTTP_HEADER_CONTENT_ENCODING)))
        return Answer{.status = MHD_HTTP_UNSUPPORTED_MEDIA_TYPE, .body = "gzip, or nothing\n"};
    return {};
}

Answer CollectorServer::State::settings(std::string_view app) const
{
    const auto text = services.settings.text();
    if (!text || app.empty() || app.find('/') != std::string_view::npos)
        return {.status = MHD_HTTP_NOT_FOUND, .body = "there are no settings here\n"};
    return {.body = *text, .type = json};
}

Answer CollectorServer::State::health() const
{
    const std::string trouble = services.collector.trouble();
    if (!trouble.empty())
        return {.status = MHD_HTTP_SERVICE_UNAVAILABLE, .body = trouble + "\n"};
    return {.body = "ok\n"};
}

MHD_Result CollectorServer::State::begin(MHD_Connection *connection, std::string_view path,
                                         std::string_view method, void **own)
{
    if (isStopping)
        return MHD_NO;
    auto exchange = std::make_unique<Exchange>();
    exchange->client = static_cast<SlowClients::Client *>(
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
    exchange->answer = answerAtOnce(connection, path, method);
    if (!exchange->answer) {
        exchange->request.packing = *packingNamed(header(connection, MHD_HTTP_HEADER_CONTENT_ENCODING));
        exchange->request.body.reserve(announcedBytes(connection).value_or(0));
    } else if (path == collectPath) {
        services.collector.countRefusal();
    }
    {
        const std::scoped_lock lock(mutex);
        ++underWay;
    }
    const Exchange *const kept = exchange.get();
    *own = exchange.release();
    // What is refused for its length is not read to its end; anything else is, and the connection stays.
    if (kept->answer && announcedBytes(connection).value_or(0) > options.bodyBytes)
        return reply(connection, *kept->answer);
    return MHD_YES;
}

MHD_Result CollectorServer::State::receive(Exchange &exchange, const char *bytes, std::size_t *count) const
{
    Bytes &body = exchange.request.body;
    if (!exchange.answer) {
        if (body.size() + *count > options.bodyBytes) { // it came without a length: no answer is possible now
            services.collector.countRefusal();
            return MHD_NO;
        }
        body.insert(body.end(), bytes, bytes + *count);
    }
    *count = 0;
    return MHD_YES;
}

/// The connection sleeps until the collector has the answer.
MHD_Result CollectorServer::State::collect(MHD_Connection *connection, Exchange &exchange)
{
    slowClients.setOurTurn(*exchange.client);
    exchange.request.answer = [connection, &exchange](int status, const std::string &reason) {
        exchange.answer =
            Answer{.status = static_cast<unsigned>(status), .body = reason.empty() ? "" : reason + "\n"};
        MHD_resume_connection(connection);
    };
    MHD_suspend_connection(connection);
    services.collector.collect(std::move(exchange.request));
    return MHD_YES;
}

void CollectorServer::State::end(Exchange *exchange)
{
    const std::unique_ptr<Exchange> ended(exchange);
    slowClients.setTheirTurn(*ended->client, services.clock.secondsOfUptime());
    const std::scoped_lock lock(mutex);
    --underWay;
    changed.notify_all();
}

namespace {

using State = CollectorServer::State;

MHD_Result handle(void *state, MHD_Connection *connection, const char *path, const char *method, const char *,
                  const char *bytes, std::size_t *count, void **own)
{
    auto &server = *static_cast<State *>(state);
    if (!*own)
        return server.begin(connection, path, method, own);
    auto &exchange = *static_cast<Exchange *>(*own);
    if (*count > 0)
        return server.receive(exchange, bytes, count);
    return exchange.answer ? reply(connection, *exchange.answer) : server.collect(connection, exchange);
}

void requestEnded(void *state, MHD_Connection *, void **own, MHD_RequestTerminationCode)
{
    if (*own)
        static_cast<State *>(state)->end(static_cast<Exchange *>(*own));
}

void connectionChanged(void *state, MHD_Connection *connection, void **own,
                       MHD_ConnectionNotificationCode what)
{
    auto &server = *static_cast<State *>(state);
    if (what == MHD_CONNECTION_NOTIFY_STARTED)
        *own = server.slowClients.add(
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd,
            server.services.clock.secondsOfUptime());
    else
        server.slowClients.remove(static_cast<SlowClients::Client *>(*own));
}

} // namespace

bool CollectorServer::State::start(const SocketAddress &address)
{
    constexpr std::size_t bytesAConnection = 65536;
    const unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ITC |
                           (address.isV6 ? unsigned{MHD_USE_IPv6} : 0U);
    daemon.reset(MHD_start_daemon(flags, 0, nullptr, nullptr, &handle, this,              //
                                  MHD_OPTION_SOCK_ADDR, address.pointer(),                //
                                  MHD_OPTION_LISTENING_ADDRESS_REUSE, 1U,                 //
                                  MHD_OPTION_CONNECTION_LIMIT, options.connections,       //
                                  MHD_OPTION_CONNECTION_MEMORY_LIMIT, bytesAConnection,   //
                                  MHD_OPTION_NOTIFY_COMPLETED, &requestEnded, this,       //
                                  MHD_OPTION_NOTIFY_CONNECTION, &connectionChanged, this, //
                                  MHD_OPTION_END));
    return daemon != nullptr;
}

Result<std::unique_ptr<CollectorServer>> CollectorServer::start(const Services &services,
                                                                const Options &options)
{
    const auto address = SocketAddress::of(options.address, options.port);
    if (!address)
        return Error{"usage", 2,
                     "\"" + options.address + "\" is no address in numbers, such as 127.0.0.1 or ::1"};
    auto state = std::make_unique<State>(services, options);
    if (!state->start(*address))
        return Error{"http", 1,
                     "cannot listen on " + options.address + ", port " + std::to_string(options.port) +
                         ": is it this machine's, is it free?"};
    return std::make_unique<CollectorServer>(std::move(state));
}

CollectorServer::CollectorServer(std::unique_ptr<State> state) : state_(std::move(state)) {}

CollectorServer::~CollectorServer()
{
    stop();
}

int CollectorServer::port() const
{
    return MHD_get_daemon_info(state_->daemon.get(), MHD_DAEMON_INFO_BIND_PORT)->port;
}

void CollectorServer::hangUpOnSlowClients()
{
    state_->slowClients.hangUp(state_->services.clock.secondsOfUptime() - state_->options.requestSeconds);
}

void CollectorServer::stop()
{
    if (!state_->daemon)
        return;
    state_->isStopping = true;
    if (const int listening = MHD_quiesce_daemon(state_->daemon.get()); listening >= 0)
        close(listening);
    const auto isIdle = [this] { return state_->underWay == 0; };
    {
        std::unique_lock lock(state_->mutex);
        state_->changed.wait_for(lock, longestStop, isIdle);
    }
    state_->services.collector.finish(); // from here on no connection sleeps: what sleeps cannot be ended
    std::unique_lock lock(state_->mutex);
    state_->changed.wait_for(lock, longestStop, isIdle);
    lock.unlock();
    state_->daemon.reset();
}

} // namespace skyflare
