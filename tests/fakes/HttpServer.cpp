#include "tests/fakes/HttpServer.h"

#include "platform/base/Text.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <sstream>
#include <thread>

namespace skyflare {

using asio::ip::tcp;

struct HttpServer::State {
    explicit State(Handler given) : handler(std::move(given)) {}

    Handler handler;
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::vector<Request> requests;
    std::size_t hangUps = 0;

    // After what the connections use, which end with it.
    asio::io_context context{1};
    tcp::acceptor acceptor{context, tcp::v4()};
    std::thread thread;

    bool waitUntil(const std::function<bool()> &holds) const
    {
        constexpr std::chrono::seconds longest{120};
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, longest, holds);
    }
};

namespace {

class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(HttpServer::State &state, tcp::socket socket)
        : state_(state), socket_(std::move(socket)), timer_(state.context)
    {
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection()
    {
        asio::error_code failed;
        socket_.close(failed); // whoever hears of the hang-up may count open files
        const std::scoped_lock lock(state_.mutex);
        ++state_.hangUps;
        state_.changed.notify_all();
    }

    void readHead()
    {
        asio::async_read_until(socket_, asio::dynamic_buffer(input_), "\r\n\r\n",
                               [self = shared_from_this()](asio::error_code failed, std::size_t size) {
                                   if (!failed)
                                       self->readBody(size);
                               });
    }

private:
    HttpServer::State &state_;
    tcp::socket socket_;
    asio::steady_timer timer_;
    std::string input_;
    HttpServer::Request request_;
    HttpServer::Answer answer_;
    std::size_t dripped_ = 0; ///< bytes of the answer
    std::array<char, 1> unexpected_{};

    void readBody(std::size_t headSize)
    {
        std::istringstream head(input_.substr(0, headSize));
        head >> request_.method >> request_.path;
        std::string line;
        std::getline(head, line);
        while (std::getline(head, line) && line != "\r") {
            const auto colon = line.find(':');
            if (colon == line.npos)
                continue;
            std::string name = line.substr(0, colon);
            std::ranges::transform(name, name.begin(), lowerAscii);
            request_.headers[name] = withoutOuterSpace(std::string_view(line).substr(colon + 1));
        }
        input_.erase(0, headSize);
        const auto length = request_.headers.find("content-length");
        const std::size_t wanted = length == request_.headers.end() ? 0 : std::stoul(length->second);
        asio::async_read(socket_, asio::dynamic_buffer(input_),
                         asio::transfer_exactly(wanted - std::min(wanted, input_.size())),
                         [self = shared_from_this()](asio::error_code failed, std::size_t) {
                             if (!failed)
                                 self->reply();
                         });
    }

    void reply()
    {
        request_.body = input_;
        answer_ = state_.handler(request_);
        {
            const std::scoped_lock lock(state_.mutex);
            state_.requests.push_back(request_);
            state_.changed.notify_all();
        }
        if (answer_.drip.count() > 0)
            return dripNext();
        asio::async_write(socket_, asio::buffer(answer_.bytes),
                          [self = shared_from_this()](asio::error_code failed, std::size_t) {
                              if (!failed)
                                  self->goOn();
                          });
    }

    void dripNext()
    {
        if (dripped_ == answer_.bytes.size())
            return goOn();
        timer_.expires_after(answer_.drip);
        timer_.async_wait([self = shared_from_this()](asio::error_code failed) {
            if (failed)
                return;
            asio::async_write(self->socket_, asio::buffer(&self->answer_.bytes[self->dripped_++], 1),
                              [self](asio::error_code broken, std::size_t) {
                                  if (!broken)
                                      self->dripNext();
                              });
        });
    }

    void goOn()
    {
        if (!answer_.repeated.empty())
            repeat();
        else if (answer_.then == HttpServer::Then::StayOpen)
            waitForHangUp();
        else if (answer_.then == HttpServer::Then::Reset) {
            asio::error_code failed;
            socket_.set_option(asio::socket_base::linger(true, 0), failed);
        }
    }

    void repeat()
    {
        timer_.expires_after(answer_.pause);
        timer_.async_wait([self = shared_from_this()](asio::error_code failed) {
            if (failed)
                return;
            asio::async_write(self->socket_, asio::buffer(self->answer_.repeated),
                              [self](asio::error_code broken, std::size_t) {
                                  if (!broken)
                                      self->repeat();
                              });
        });
    }

    void waitForHangUp()
    {
        asio::async_read(socket_, asio::buffer(unexpected_),
                         [self = shared_from_this()](asio::error_code, std::size_t) {});
    }
};

void acceptNext(HttpServer::State &state)
{
    state.acceptor.async_accept([&state](asio::error_code failed, tcp::socket socket) {
        if (failed)
            return;
        std::make_shared<Connection>(state, std::move(socket))->readHead();
        acceptNext(state);
    });
}

} // namespace

HttpServer::HttpServer(Handler handler, Begins begins) : state_(std::make_shared<State>(std::move(handler)))
{
    state_->acceptor.bind({asio::ip::address_v4::loopback(), 0});
    if (begins == Begins::Listening)
        listen();
}

void HttpServer::listen()
{
    state_->acceptor.listen();
    acceptNext(*state_);
    state_->thread = std::thread([state = state_.get()] { state->context.run(); });
}

HttpServer::~HttpServer()
{
    state_->context.stop();
    if (state_->thread.joinable())
        state_->thread.join();
}

HttpServer::Answer HttpServer::answer(int status, const std::string &body, const std::string &headers)
{
    return {"HTTP/1.1 " + std::to_string(status) +
            " Whatever\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers + "\r\n" + body};
}

std::string HttpServer::url(const std::string &path) const
{
    return "http://127.0.0.1:" + std::to_string(port()) + path;
}

int HttpServer::port() const
{
    return state_->acceptor.local_endpoint().port();
}

std::vector<HttpServer::Request> HttpServer::requests() const
{
    const std::scoped_lock lock(state_->mutex);
    return state_->requests;
}

bool HttpServer::waitForRequests(std::size_t count) const
{
    return state_->waitUntil([&] { return state_->requests.size() >= count; });
}

bool HttpServer::waitForHangUps(std::size_t count) const
{
    return state_->waitUntil([&] { return state_->hangUps >= count; });
}

} // namespace skyflare
