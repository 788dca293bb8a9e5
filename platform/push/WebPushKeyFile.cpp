#include "platform/push/WebPushKeyFile.h"

#include "platform/base/Files.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace skyflare {

namespace {

using Digest = std::array<std::uint8_t, 32>;
constexpr std::size_t secretsSize =
    std::tuple_size_v<WebPushKeys::PrivateKey> + std::tuple_size_v<WebPushKeys::AuthSecret>;

/// Nothing where the system's rules forbid SHA-256.
std::optional<Digest> digestOf(std::span<const std::uint8_t> bytes)
{
    Digest digest{};
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
        return {};
    return digest;
}

Error damaged()
{
    return {"push", 0, "it is damaged"};
}

Result<WebPushKeys> keysIn(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() != secretsSize + std::tuple_size_v<Digest>)
        return damaged();
    const auto secrets = bytes.first(secretsSize);
    const auto digest = digestOf(secrets);
    if (!digest || !std::ranges::equal(*digest, bytes.subspan(secretsSize)))
        return damaged();
    WebPushKeys::PrivateKey privateKey{};
    WebPushKeys::AuthSecret authSecret{};
    std::ranges::copy(secrets.first(privateKey.size()), privateKey.begin());
    std::ranges::copy(secrets.last(authSecret.size()), authSecret.begin());
    return WebPushKeys::from(privateKey, authSecret);
}

/// What a crash may have lost of it is damaged then, and made again.
Result<> write(const std::filesystem::path &file, const WebPushKeys &keys)
{
    Bytes bytes(keys.privateKey().begin(), keys.privateKey().end());
    bytes.insert(bytes.end(), keys.authSecret().begin(), keys.authSecret().end());
    const auto digest = digestOf(bytes);
    if (!digest)
        return Error{"push", 0, "this system cannot compute SHA-256"};
    bytes.insert(bytes.end(), digest->begin(), digest->end());
    return replaceFile(file, bytes, Durability::None, FileReaders::Owner);
}

} // namespace

Result<WebPushKeys> WebPushKeyFile::open(const std::filesystem::path &file, RandomSource &random,
                                         Console &console)
{
    const auto bytes = readFile(file);
    if (!bytes && bytes.error().code != ENOENT)
        return bytes.error();
    if (bytes) {
        if (auto kept = keysIn(*bytes))
            return kept;
        console.reportLine("The keys for push messages are made anew: " + file.string() + " is damaged");
    }
    auto made = WebPushKeys::make(random);
    if (!made)
        return made;
    if (const auto written = write(file, *made); !written)
        return written.error();
    return made;
}

} // namespace skyflare
