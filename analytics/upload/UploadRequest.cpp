#include "analytics/upload/UploadRequest.h"

#include "analytics/upload/EngineVersion.h"
#include "platform/base/Text.h"

#include <chrono>
#include <string>
#include <utility>

namespace skyflare {

namespace {

constexpr std::size_t mostAnswerBytes = 65'536;

/// RFC 3986: all but the unreserved characters. ":" stays, as it may in a path and a query, so that an app
/// id can be read in a server's log.
std::string percentEncoded(std::string_view text)
{
    constexpr std::string_view hex = "0123456789ABCDEF";
    constexpr std::string_view others = "-._~:";
    std::string encoded;
    for (const char letter : text) {
        const char lower = lowerAscii(letter);
        const auto byte = static_cast<unsigned char>(letter);
        if ((lower >= 'a' && lower <= 'z') || (letter >= '0' && letter <= '9') ||
            others.find(letter) != others.npos)
            encoded += letter;
        else
            (encoded += '%').append({hex[byte >> 4U], hex[byte & 15U]});
    }
    return encoded;
}

std::chrono::milliseconds timeLimitIn(const APMRemoteConfig &settings)
{
    const std::chrono::duration<double> seconds(settings.number(APMSetting::NetworkTimeout));
    return std::chrono::duration_cast<std::chrono::milliseconds>(seconds);
}

} // namespace

HttpRequest uploadRequest(const UploadHost &host, std::string_view subdomain, Bytes body,
                          const APMRemoteConfig &settings)
{
    return {.method = HttpRequest::Method::Post,
            .url = host.withSubdomain(subdomain).url("/a"),
            .headers = {{"Content-Type", "application/x-protobuf"}, {"Content-Encoding", "gzip"}},
            .body = std::move(body),
            .maximumAnswerBytes = mostAnswerBytes,
            .timeLimit = timeLimitIn(settings)};
}

HttpRequest configurationRequest(const UploadHost &host, const APMAppData &app,
                                 const APMRemoteConfig &settings)
{
    return {.url = host.url("/config/app/" + percentEncoded(app.appId) + "?platform=" +
                            percentEncoded(app.platform) + "&gmp_version=" + percentEncoded(engineVersion()) +
                            "&runtime_version=" + percentEncoded(app.osVersion)),
            .headers = {{"Accept", "application/json"}},
            .maximumAnswerBytes = mostAnswerBytes,
            .timeLimit = timeLimitIn(settings)};
}

} // namespace skyflare
