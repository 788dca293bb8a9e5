#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// A web server on this machine for one test, which says for every request what goes back, byte by byte.
///
/// Threads: the test's; the handler runs on the server's own.
class HttpServer {
public:
    struct Request {
        std::string method;
        std::string path;
        std::map<std::string, std::string> headers; ///< names in lower case
        std::string body;
    };

    enum class Then { Close, StayOpen, Reset };

    struct Answer {
        std::string bytes; ///< as they go out: status line, headers, body; or anything else
        Then then = Then::Close;
        std::string repeated = {};          ///< sent after that, on and on, until the client has gone
        std::chrono::milliseconds pause{0}; ///< before each time
        std::chrono::milliseconds drip{0};  ///< before each byte of `bytes`; 0: they go out together
    };

    using Handler = std::function<Answer(const Request &)>;

    enum class Begins { Listening, Refusing };

    /// @param begins  with Refusing it has its port, and refuses connections, until listen()
    explicit HttpServer(Handler handler, Begins begins = Begins::Listening);
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;
    /// Hangs up on everybody.
    ~HttpServer();

    void listen();

    /// A whole answer. @param headers  each with its line end
    static Answer answer(int status, const std::string &body, const std::string &headers = {});

    [[nodiscard]] std::string url(const std::string &path = "/") const;
    [[nodiscard]] int port() const;
    [[nodiscard]] std::vector<Request> requests() const;
    /// Whether that many requests come, and that many connections end, in the time that a test may take.
    [[nodiscard]] bool waitForRequests(std::size_t count) const;
    [[nodiscard]] bool waitForHangUps(std::size_t count) const;

    struct State; ///< shared with the connections

private:
    std::shared_ptr<State> state_;
};

} // namespace skyflare
