#include "platform/net/CurlTransfer.h"

#include "platform/base/Text.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace skyflare {

namespace {

constexpr std::size_t maximumHeaderBytes = 32768; ///< of all answers together that lead to the last one
constexpr long maximumRedirects = 3;

bool isLoopback(const curl_sockaddr &address)
{
    if (address.family == AF_INET) {
        sockaddr_in v4{};
        std::memcpy(&v4, &address.addr, std::min(sizeof v4, std::size_t{address.addrlen}));
        return (ntohl(v4.sin_addr.s_addr) >> 24U) == IN_LOOPBACKNET;
    }
    sockaddr_in6 v6{};
    std::memcpy(&v6, &address.addr, std::min(sizeof v6, std::size_t{address.addrlen}));
    return address.family == AF_INET6 && IN6_IS_ADDR_LOOPBACK(&v6.sin6_addr);
}

/// Without TLS nothing leaves this machine, wherever a name or a redirect may point.
curl_socket_t openLoopbackSocket(void * /*unused*/, curlsocktype /*purpose*/, curl_sockaddr *address)
{
    if (!isLoopback(*address))
        return CURL_SOCKET_BAD;
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

struct FailureRow {
    CURLcode code;
    HttpFailure failure;
};

constexpr std::array<FailureRow, 12> failureRows{{
    {CURLE_COULDNT_RESOLVE_HOST, HttpFailure::Unreachable},
    {CURLE_COULDNT_RESOLVE_PROXY, HttpFailure::Unreachable},
    {CURLE_COULDNT_CONNECT, HttpFailure::Unreachable},
    {CURLE_SEND_ERROR, HttpFailure::Unreachable},
    {CURLE_PEER_FAILED_VERIFICATION, HttpFailure::Untrusted},
    {CURLE_SSL_CONNECT_ERROR, HttpFailure::Untrusted},
    {CURLE_SSL_CACERT_BADFILE, HttpFailure::Untrusted},
    {CURLE_SSL_ISSUER_ERROR, HttpFailure::Untrusted},
    {CURLE_SSL_CIPHER, HttpFailure::Untrusted},
    {CURLE_OPERATION_TIMEDOUT, HttpFailure::TimedOut},
    {CURLE_TOO_MANY_REDIRECTS, HttpFailure::Redirected},
    {CURLE_LOGIN_DENIED, HttpFailure::Redirected}, // to an address with a user's name in it
}};

HttpFailure failureFor(CURLcode code)
{
    const auto row = std::ranges::find(failureRows, code, &FailureRow::code);
    return row == failureRows.end() ? HttpFailure::BrokenAnswer : row->failure;
}

bool isHeaderName(std::string_view name)
{
    constexpr std::string_view allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!#$%&'*+-.^_`|~"; // RFC 9110, token
    return !name.empty() && name.find_first_not_of(allowed) == name.npos;
}

bool isHeaderValue(std::string_view value)
{
    return value.find_first_of(std::string_view("\r\n\0", 3)) == value.npos;
}

} // namespace

CurlTransfer::CurlTransfer(HttpRequest request, CheckedUrl url)
    : request_(std::move(request)), url_(std::move(url)), easy_(curl_easy_init())
{
}

Result<std::unique_ptr<CurlTransfer>> CurlTransfer::make(HttpRequest request,
                                                         const std::filesystem::path &certificateAuthorities)
{
    auto url = CheckedUrl::parse(request.url);
    if (!url)
        return url.error();
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): its constructor is private
    std::unique_ptr<CurlTransfer> transfer(new CurlTransfer(std::move(request), std::move(*url)));
    if (const auto prepared = transfer->prepare(certificateAuthorities); !prepared)
        return prepared.error();
    return transfer;
}

template <typename Value> void CurlTransfer::set(CURLoption option, Value value)
{
    accepted_ = accepted_ && curl_easy_setopt(easy_.get(), option, value) == CURLE_OK;
}

Result<> CurlTransfer::prepare(const std::filesystem::path &certificateAuthorities)
{
    if (!easy_)
        return httpError(HttpFailure::Unreachable, "there is no memory for a request");
    set(CURLOPT_CURLU, url_.url.get());
    set(CURLOPT_ERRORBUFFER, why_.data());
    set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    set(CURLOPT_HEADERDATA, static_cast<void *>(this));
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    set(CURLOPT_WRITEDATA, static_cast<void *>(this));
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(std::max<std::int64_t>(request_.timeLimit.count(), 1)));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L);   // a name server that hangs must not hold us
    set(CURLOPT_FORBID_REUSE, 1L); // requests are rare: no socket stays open between them
    if (!certificateAuthorities.empty())
        set(CURLOPT_CAINFO, certificateAuthorities.c_str());
    restrict();
    setBody();
    if (auto headers = setHeaders(); !headers)
        return headers;
    if (!accepted_)
        return httpError(HttpFailure::InvalidRequest, "libcurl does not take this request");
    return {};
}

void CurlTransfer::restrict()
{
    set(CURLOPT_PROTOCOLS_STR, url_.scheme.c_str()); // of redirects too
    set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
    // Deliberate: not for a Post, which would go on as a Get, and its body be lost without a word.
    set(CURLOPT_FOLLOWLOCATION, request_.method == HttpRequest::Method::Get ? 1L : 0L);
    set(CURLOPT_MAXREDIRS, maximumRedirects);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (url_.isLoopback)
        set(CURLOPT_PROXY, ""); // what the environment says is for other machines
    if (url_.isPlain())
        set(CURLOPT_OPENSOCKETFUNCTION, &openLoopbackSocket);
}

void CurlTransfer::setBody()
{
    if (request_.method != HttpRequest::Method::Post)
        return;
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    // Null would ask for a callback.
    set(CURLOPT_POSTFIELDS,
        request_.body.empty() ? "" : reinterpret_cast<const char *>(request_.body.data()));
}

void CurlTransfer::addHeader(const std::string &line)
{
    curl_slist *longer = curl_slist_append(headers_.get(), line.c_str());
    accepted_ = accepted_ && longer;
    if (longer) {
        static_cast<void>(headers_.release());
        headers_.reset(longer);
    }
}

Result<> CurlTransfer::setHeaders()
{
    // What libcurl would add of its own: a pause that small servers do not know, and a wrong type.
    addHeader("Expect:");
    if (request_.method == HttpRequest::Method::Post)
        addHeader("Content-Type:");
    for (const auto &[name, value] : request_.headers) {
        if (!isHeaderName(name) || !isHeaderValue(value))
            return httpError(HttpFailure::InvalidRequest, "this is no header: " + name);
        std::string line = name;
        line.append(value.empty() ? ";" : ": ").append(value); // what libcurl takes for an empty one
        addHeader(line);
    }
    set(CURLOPT_HTTPHEADER, headers_.get());
    return {};
}

void CurlTransfer::didReceiveHeader(std::string_view line)
{
    const auto colon = line.find(':');
    if (line.starts_with("HTTP/")) { // a redirect's headers, or an interim answer's, have come before
        response_ = {};
    } else if (colon != line.npos) {
        response_.headers.push_back({std::string(withoutOuterSpace(line.substr(0, colon))),
                                     std::string(withoutOuterSpace(line.substr(colon + 1)))});
    }
}

bool CurlTransfer::didReceiveBody(std::string_view bytes)
{
    if (bytes.size() > request_.maximumAnswerBytes - response_.body.size())
        return false;
    response_.body.insert(response_.body.end(), bytes.begin(), bytes.end());
    return true;
}

std::size_t CurlTransfer::onHeader(char *bytes, std::size_t one, std::size_t count, void *self)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    transfer.headerBytes_ += one * count;
    transfer.tooLarge_ = transfer.headerBytes_ > maximumHeaderBytes;
    if (transfer.tooLarge_)
        return 0;
    transfer.didReceiveHeader({bytes, one * count});
    return one * count;
}

std::size_t CurlTransfer::onBody(char *bytes, std::size_t one, std::size_t count, void *self)
{
    auto &transfer = *static_cast<CurlTransfer *>(self);
    transfer.tooLarge_ = !transfer.didReceiveBody({bytes, one * count});
    return transfer.tooLarge_ ? 0 : one * count;
}

Result<HttpResponse> CurlTransfer::finish(CURLcode code)
{
    if (tooLarge_)
        return httpError(HttpFailure::TooLarge, "the server sends more than it may");
    // libcurl has one code for a redirect to another scheme and for an answer that is not HTTP.
    if (code == CURLE_UNSUPPORTED_PROTOCOL && response_.header("Location"))
        return httpError(HttpFailure::Redirected, "the server sends us to where we do not go");
    if (code != CURLE_OK)
        return httpError(failureFor(code), why_[0] ? why_.data() : curl_easy_strerror(code));
    long status = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
    response_.status = static_cast<int>(status);
    return std::move(response_);
}

} // namespace skyflare
