#pragma once

#include "platform/base/Bytes.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace skyflare {

/// Base64url without padding (RFC 4648, section 5).
Bytes fromBase64Url(std::string_view text);

/// The server that sends push messages: it knows a device's token, and nothing else of it.
///
/// It encrypts as RFC 8291 says, with one HMAC after the other as the RFC writes them. Threads: any.
class WebPushSender {
public:
    struct Shape {
        std::size_t padding = 0;
        std::uint8_t delimiter = 2;
        std::uint32_t recordSize = 4096;
    };

    /// @param deviceToken  the line of JSON that the device hands out
    explicit WebPushSender(const Bytes &deviceToken);

    [[nodiscard]] const std::string &endpoint() const { return endpoint_; }
    [[nodiscard]] Bytes encrypt(std::string_view text, const Shape &shape) const;
    [[nodiscard]] Bytes encrypt(std::string_view text) const { return encrypt(text, Shape{}); }

private:
    std::string endpoint_;
    Bytes deviceKey_;
    Bytes authSecret_;
};

} // namespace skyflare
