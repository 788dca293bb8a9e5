#pragma once

#include "platform/base/RandomSource.h"
#include "platform/base/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace skyflare {

/// What a push message to this device is encrypted with (RFC 8291, sections 2 and 3): a P-256 key pair and a
/// secret that its senders share with it.
///
/// Threads: any; it never changes.
class WebPushKeys {
public:
    using PrivateKey = std::array<std::uint8_t, 32>; ///< the number, most significant byte first
    using PublicKey = std::array<std::uint8_t, 65>;  ///< the point, uncompressed (SEC 1, section 2.3.3)
    using AuthSecret = std::array<std::uint8_t, 16>;

    /// An error where there are no random numbers.
    static Result<WebPushKeys> make(RandomSource &random);
    /// An error unless the number is a private key of the curve.
    static Result<WebPushKeys> from(const PrivateKey &privateKey, const AuthSecret &authSecret);

    [[nodiscard]] const PrivateKey &privateKey() const { return privateKey_; }
    [[nodiscard]] const PublicKey &publicKey() const { return publicKey_; }
    [[nodiscard]] const AuthSecret &authSecret() const { return authSecret_; }

private:
    PrivateKey privateKey_;
    PublicKey publicKey_;
    AuthSecret authSecret_;

    WebPushKeys(const PrivateKey &privateKey, const PublicKey &publicKey, const AuthSecret &authSecret)
        : privateKey_(privateKey), publicKey_(publicKey), authSecret_(authSecret)
    {
    }
};

} // namespace skyflare
