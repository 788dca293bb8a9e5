#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/Result.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

struct HttpHeader {
    std::string name;
    std::string value;
};

/// What is asked of a server.
struct HttpRequest {
    enum class Method { Get, Post };

    Method method = Method::Get;
    std::string url; ///< https, or http to this machine itself
    std::vector<HttpHeader> headers{};
    Bytes body{}; ///< of a Post
    std::size_t maximumAnswerBytes = 65536;
    std::chrono::milliseconds timeLimit{10'000}; ///< for the whole, redirects too
};

/// What a server has said, whole.
struct HttpResponse {
    int status = 0;
    std::vector<HttpHeader> headers{};
    Bytes body{};

    /// The value of the first header of that name, in any case of letters.
    [[nodiscard]] std::optional<std::string_view> header(std::string_view name) const;
};

/// Why there is no answer: the codes of errors of the domain "http". A status such as 500 is an answer.
enum class HttpFailure {
    InvalidRequest = 1, ///< no URL, an address that may not be asked, a header that is none
    Unreachable = 2,    ///< no such host, nobody there, the connection lost on the way
    Untrusted = 3,      ///< TLS failed, or the certificate is not good
    TimedOut = 4,
    TooLarge = 5,     ///< more bytes than were asked for, or headers without an end
    Redirected = 6,   ///< too often, or to where we do not go
    BrokenAnswer = 7, ///< not HTTP, or cut short
    Cancelled = 8,    ///< the transport has ended
};

[[nodiscard]] Error httpError(HttpFailure failure, std::string message);

/// A request under way. Letting go of it cancels it: what has not been answered then never will be.
///
/// Threads: any. A completion that is running on another thread at that moment runs to its end.
class HttpTask {
public:
    HttpTask() = default;
    HttpTask(const HttpTask &) = delete;
    HttpTask &operator=(const HttpTask &) = delete;
    virtual ~HttpTask() = default;
};

/// Asks servers.
///
/// Threads: any; no call waits for the network.
class HttpTransport {
public:
    using Completion = std::function<void(const Result<HttpResponse> &)>;

    HttpTransport() = default;
    HttpTransport(const HttpTransport &) = delete;
    HttpTransport &operator=(const HttpTransport &) = delete;
    virtual ~HttpTransport() = default;

    /// Runs `completion` once, on `queue`, after the call has returned; unless the task goes before it.
    /// A Get follows a few redirects that stay with its scheme, a Post none.
    /// @param queue  must live until the completion has run or the task has gone.
    [[nodiscard]] virtual std::unique_ptr<HttpTask> send(HttpRequest request, DispatchQueue &queue,
                                                         Completion completion) = 0;
};

} // namespace skyflare
