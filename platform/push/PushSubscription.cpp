#include "platform/push/PushSubscription.h"

#include <nlohmann/json.hpp>
#include <openssl/evp.h>

#include <algorithm>
#include <span>

namespace skyflare {

namespace {

constexpr std::size_t longestEndpoint = 1000;

/// RFC 4648, section 5, without padding.
std::string base64Url(std::span<const std::uint8_t> bytes)
{
    Bytes encoded((bytes.size() + 2) / 3 * 4 + 1); // and the zero that OpenSSL puts behind it
    const int size = EVP_EncodeBlock(encoded.data(), bytes.data(), static_cast<int>(bytes.size()));
    std::string text(encoded.begin(), encoded.begin() + size);
    std::ranges::replace(text, '+', '-');
    std::ranges::replace(text, '/', '_');
    return text.substr(0, text.find('='));
}

} // namespace

bool isPushEndpoint(std::string_view endpoint)
{
    const auto isVisible = [](char letter) { return letter > ' ' && letter < '\x7f'; };
    return endpoint.size() <= longestEndpoint && std::ranges::all_of(endpoint, isVisible) &&
           (endpoint.starts_with("https://") || endpoint.starts_with("http://"));
}

Bytes deviceTokenFor(const std::string &endpoint, const WebPushKeys &keys)
{
    const nlohmann::ordered_json token{{"endpoint", endpoint},
                                       {"p256dh", base64Url(keys.publicKey())},
                                       {"auth", base64Url(keys.authSecret())}};
    const std::string text = token.dump();
    return {text.begin(), text.end()};
}

} // namespace skyflare
