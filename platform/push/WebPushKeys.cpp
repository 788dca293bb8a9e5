#include "platform/push/WebPushKeys.h"

#include "platform/push/OpenSslHandles.h"

#include <optional>

namespace skyflare {

namespace {

/// Nothing where the number is no private key.
std::optional<WebPushKeys::PublicKey> publicKeyOf(const WebPushKeys::PrivateKey &privateKey)
{
    const CurveGroup group(EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1));
    const BigNumber number(BN_bin2bn(privateKey.data(), static_cast<int>(privateKey.size()), nullptr));
    if (!group || !number || BN_is_zero(number.get()) == 1 ||
        BN_cmp(number.get(), EC_GROUP_get0_order(group.get())) >= 0)
        return {};
    WebPushKeys::PublicKey publicKey{};
    const CurvePoint point(EC_POINT_new(group.get()));
    if (!point || EC_POINT_mul(group.get(), point.get(), number.get(), nullptr, nullptr, nullptr) != 1 ||
        EC_POINT_point2oct(group.get(), point.get(), POINT_CONVERSION_UNCOMPRESSED, publicKey.data(),
                           publicKey.size(), nullptr) != publicKey.size())
        return {};
    return publicKey;
}

} // namespace

Result<WebPushKeys> WebPushKeys::from(const PrivateKey &privateKey, const AuthSecret &authSecret)
{
    if (const auto publicKey = publicKeyOf(privateKey))
        return WebPushKeys(privateKey, *publicKey, authSecret);
    return cryptographyError("this is no key for push messages");
}

Result<WebPushKeys> WebPushKeys::make(RandomSource &random)
{
    constexpr int attempts = 3; // one number of four thousand million is no key
    PrivateKey privateKey{};
    AuthSecret authSecret{};
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (const auto filled = random.fill(privateKey); !filled)
            return filled.error();
        if (const auto filled = random.fill(authSecret); !filled)
            return filled.error();
        if (auto made = from(privateKey, authSecret))
            return made;
    }
    return cryptographyError("no key for push messages can be made");
}

} // namespace skyflare
