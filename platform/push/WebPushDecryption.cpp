#include "platform/push/WebPushDecryption.h"

#include "platform/push/OpenSslHandles.h"

#include <openssl/core_names.h>

#include <algorithm>
#include <string_view>

namespace skyflare {

namespace {

using Span = std::span<const std::uint8_t>;
using Secret = std::array<std::uint8_t, 32>;

constexpr std::size_t saltSize = 16;
constexpr std::size_t keyIdSize = std::tuple_size_v<WebPushKeys::PublicKey>;
constexpr std::size_t headerSize = saltSize + sizeof(std::uint32_t) + 1 + keyIdSize;
constexpr std::size_t tagSize = 16;
constexpr std::size_t delimiterSize = 1;
constexpr std::uint8_t lastRecord = 2; // the delimiter between text and padding

/// The parts of a message. Borrows its bytes.
struct Message {
    Span salt;
    Span senderKey;
    Span cipherText;
    Span tag;
};

/// RFC 8188, section 2.1; of one record, as RFC 8291, section 4, asks.
Result<Message> partsOf(Span message)
{
    if (message.size() < headerSize + delimiterSize + tagSize)
        return Error{"push", 0, "the message is too short to be encrypted"};
    std::size_t recordSize = 0;
    for (const std::size_t byte : message.subspan(saltSize, sizeof(std::uint32_t)))
        recordSize = recordSize << 8U | byte;
    if (message[headerSize - keyIdSize - 1] != keyIdSize)
        return Error{"push", 0, "the message does not begin with its sender's key"};
    const Span record = message.subspan(headerSize);
    if (record.size() > recordSize)
        return Error{"push", 0, "the message is of more than one record"};
    return Message{.salt = message.first(saltSize),
                   .senderKey = message.subspan(headerSize - keyIdSize, keyIdSize),
                   .cipherText = record.first(record.size() - tagSize),
                   .tag = record.last(tagSize)};
}

/// @param privateKey  empty: it has none
Key keyOf(Span publicKey, Span privateKey)
{
    const ParameterBuilder builder(OSSL_PARAM_BLD_new());
    const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
    const BigNumber number(BN_bin2bn(privateKey.data(), static_cast<int>(privateKey.size()), nullptr));
    if (!builder || !context || !number ||
        OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, SN_X9_62_prime256v1, 0) !=
            1 ||
        OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, publicKey.data(),
                                         publicKey.size()) != 1)
        return {};
    if (!privateKey.empty() &&
        OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, number.get()) != 1)
        return {};
    const Parameters parameters(OSSL_PARAM_BLD_to_param(builder.get()));
    EVP_PKEY *key = nullptr;
    if (!parameters || EVP_PKEY_fromdata_init(context.get()) != 1 ||
        EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_KEYPAIR, parameters.get()) != 1)
        return {};
    return Key(key);
}

/// ECDH. An error where the sender's key is no point of the curve.
Result<Secret> sharedSecret(const WebPushKeys &keys, Span senderKey)
{
    const Key ours = keyOf(keys.publicKey(), keys.privateKey());
    const Key theirs = keyOf(senderKey, {});
    const KeyContext context(ours ? EVP_PKEY_CTX_new_from_pkey(nullptr, ours.get(), nullptr) : nullptr);
    Secret secret{};
    std::size_t size = secret.size();
    if (!theirs || !context || EVP_PKEY_derive_init(context.get()) != 1 ||
        EVP_PKEY_derive_set_peer(context.get(), theirs.get()) != 1 ||
        EVP_PKEY_derive(context.get(), secret.data(), &size) != 1 || size != secret.size())
        return cryptographyError("the sender's key of the message is none");
    return secret;
}

// OpenSSL takes what it only reads through pointers that are not const.
OSSL_PARAM octets(const char *name, Span bytes)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    return OSSL_PARAM_construct_octet_string(name, const_cast<std::uint8_t *>(bytes.data()), bytes.size());
}

/// HKDF with SHA-256 (RFC 5869).
template <std::size_t size> Result<std::array<std::uint8_t, size>> derive(Span salt, Span inputKey, Span info)
{
    std::array<char, 7> digest{"SHA256"};
    const std::array parameters{
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest.data(), 0),
        octets(OSSL_KDF_PARAM_SALT, salt),
        octets(OSSL_KDF_PARAM_KEY, inputKey),
        octets(OSSL_KDF_PARAM_INFO, info),
        OSSL_PARAM_construct_end(),
    };
    const Derivation derivation(EVP_KDF_fetch(nullptr, "HKDF", nullptr));
    const DerivationContext context(EVP_KDF_CTX_new(derivation.get()));
    std::array<std::uint8_t, size> derived{};
    if (!context || EVP_KDF_derive(context.get(), derived.data(), derived.size(), parameters.data()) != 1)
        return cryptographyError("this system cannot derive keys for push messages");
    return derived;
}

/// What a derived key is for; the zero at the end belongs to it.
template <std::size_t size> Bytes purpose(const char (&text)[size])
{
    return {text, text + size};
}

/// RFC 8291, section 3.3: the key that both sides can compute, bound to both keys and the shared secret.
Result<Secret> inputKey(const WebPushKeys &keys, Span senderKey)
{
    const auto secret = sharedSecret(keys, senderKey);
    if (!secret)
        return secret;
    Bytes info = purpose("WebPush: info");
    info.insert(info.end(), keys.publicKey().begin(), keys.publicKey().end());
    info.insert(info.end(), senderKey.begin(), senderKey.end());
    return derive<std::tuple_size_v<Secret>>(keys.authSecret(), *secret, info);
}

/// AES-128-GCM.
Result<Bytes> decrypt(const Message &message, Span key, Span nonce)
{
    const Cipher cipher(EVP_CIPHER_CTX_new());
    Bytes text(message.cipherText.size());
    Bytes tag(message.tag.begin(), message.tag.end());
    int size = 0;
    int rest = 0;
    if (!cipher ||
        EVP_DecryptInit_ex2(cipher.get(), EVP_aes_128_gcm(), key.data(), nonce.data(), nullptr) != 1 ||
        EVP_DecryptUpdate(cipher.get(), text.data(), &size, message.cipherText.data(),
                          static_cast<int>(message.cipherText.size())) != 1 ||
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_SET_TAG, static_cast<int>(tag.size()), tag.data()) !=
            1 ||
        EVP_DecryptFinal_ex(cipher.get(), text.data() + size, &rest) != 1)
        return cryptographyError("the message is not encrypted for this device, or was changed on its way");
    return text;
}

/// RFC 8188, section 2: the text, a delimiter, any number of zeros.
Result<Bytes> withoutPadding(Bytes text)
{
    while (!text.empty() && text.back() == 0)
        text.pop_back();
    if (text.empty() || text.back() != lastRecord)
        return Error{"push", 0, "the message does not end with its only record"};
    text.pop_back();
    return text;
}

} // namespace

Result<Bytes> decryptWebPush(const WebPushKeys &keys, std::span<const std::uint8_t> message)
{
    constexpr std::size_t mostBytes = 1U
                                      << 20U; // far more than any push service takes; OpenSSL counts in int
    if (message.size() > mostBytes)
        return Error{"push", 0, "the message is too long"};
    const auto parts = partsOf(message);
    if (!parts)
        return parts.error();
    const auto input = inputKey(keys, parts->senderKey);
    if (!input)
        return input.error();
    const auto key = derive<16>(parts->salt, *input, purpose("Content-Encoding: aes128gcm"));
    const auto nonce = derive<12>(parts->salt, *input, purpose("Content-Encoding: nonce"));
    if (!key || !nonce)
        return key ? nonce.error() : key.error();
    auto text = decrypt(*parts, *key, *nonce);
    return text ? withoutPadding(*std::move(text)) : text;
}

} // namespace skyflare
