#pragma once

#include "platform/net/CheckedUrl.h"
#include "platform/net/CurlHandles.h"
#include "platform/net/HttpTransport.h"

#include <array>
#include <filesystem>
#include <memory>
#include <string_view>

namespace skyflare {

/// One request as libcurl carries it out: all that it may do, and what has come back so far.
///
/// Threads: one at a time.
class CurlTransfer {
public:
    /// @param certificateAuthorities  a file of certificates to trust instead of the system's; may be empty
    static Result<std::unique_ptr<CurlTransfer>> make(HttpRequest request,
                                                      const std::filesystem::path &certificateAuthorities);
    CurlTransfer(const CurlTransfer &) = delete;
    CurlTransfer &operator=(const CurlTransfer &) = delete;
    ~CurlTransfer() = default;

    [[nodiscard]] CURL *easy() { return easy_.get(); }

    /// The answer, or why there is none, when libcurl has ended with `code`. Once.
    Result<HttpResponse> finish(CURLcode code);

private:
    CurlTransfer(HttpRequest request, CheckedUrl url);

    const HttpRequest request_;
    const CheckedUrl url_;
    CurlHeaders headers_;
    std::array<char, CURL_ERROR_SIZE> why_{};
    HttpResponse response_;
    std::size_t headerBytes_ = 0;
    bool tooLarge_ = false;
    bool accepted_ = true; ///< every option so far
    CurlEasy easy_;        // after all that it points to

    template <typename Value> void set(CURLoption option, Value value);
    Result<> prepare(const std::filesystem::path &certificateAuthorities);
    void restrict();
    void setBody();
    Result<> setHeaders();
    void addHeader(const std::string &line);

    void didReceiveHeader(std::string_view line);
    bool didReceiveBody(std::string_view bytes);
    static std::size_t onHeader(char *bytes, std::size_t one, std::size_t count, void *self);
    static std::size_t onBody(char *bytes, std::size_t one, std::size_t count, void *self);
};

} // namespace skyflare
