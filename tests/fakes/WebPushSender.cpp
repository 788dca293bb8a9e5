#include "tests/fakes/WebPushSender.h"

#include "platform/base/Handle.h"

#include <nlohmann/json.hpp>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <algorithm>
#include <stdexcept>

namespace skyflare {

namespace {

using Key = Handle<EVP_PKEY, &EVP_PKEY_free>;
using KeyContext = Handle<EVP_PKEY_CTX, &EVP_PKEY_CTX_free>;
using Cipher = Handle<EVP_CIPHER_CTX, &EVP_CIPHER_CTX_free>;

constexpr std::size_t tagSize = 16;

void require(bool isDone)
{
    if (!isDone)
        throw std::runtime_error("the test cannot encrypt");
}

Bytes hmac(const Bytes &key, Bytes data, std::size_t size = 32)
{
    Bytes digest(32);
    require(HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), data.data(), data.size(),
                 digest.data(), nullptr) != nullptr);
    digest.resize(size);
    return digest;
}

Bytes text(std::string_view label, const Bytes &first = {}, const Bytes &second = {})
{
    Bytes bytes(label.begin(), label.end());
    bytes.push_back(0);
    bytes.insert(bytes.end(), first.begin(), first.end());
    bytes.insert(bytes.end(), second.begin(), second.end());
    bytes.push_back(1);
    return bytes;
}

Bytes publicKeyOf(EVP_PKEY *key)
{
    Bytes bytes(65);
    std::size_t size = 0;
    require(EVP_PKEY_get_octet_string_param(key, OSSL_PKEY_PARAM_PUB_KEY, bytes.data(), bytes.size(),
                                            &size) == 1 &&
            size == bytes.size());
    return bytes;
}

Bytes sharedSecret(EVP_PKEY *ours, const Bytes &theirKey)
{
    const Key theirs(EVP_PKEY_new());
    const KeyContext context(EVP_PKEY_CTX_new(ours, nullptr));
    Bytes secret(32);
    std::size_t size = secret.size();
    require(EVP_PKEY_copy_parameters(theirs.get(), ours) == 1 &&
            EVP_PKEY_set1_encoded_public_key(theirs.get(), theirKey.data(), theirKey.size()) == 1 &&
            EVP_PKEY_derive_init(context.get()) == 1 &&
            EVP_PKEY_derive_set_peer(context.get(), theirs.get()) == 1 &&
            EVP_PKEY_derive(context.get(), secret.data(), &size) == 1);
    return secret;
}

Bytes seal(const Bytes &key, const Bytes &nonce, const Bytes &record)
{
    const Cipher cipher(EVP_CIPHER_CTX_new());
    Bytes sealed(record.size() + tagSize);
    int size = 0;
    int rest = 0;
    require(EVP_EncryptInit_ex2(cipher.get(), EVP_aes_128_gcm(), key.data(), nonce.data(), nullptr) == 1 &&
            EVP_EncryptUpdate(cipher.get(), sealed.data(), &size, record.data(),
                              static_cast<int>(record.size())) == 1 &&
            EVP_EncryptFinal_ex(cipher.get(), sealed.data() + size, &rest) == 1 &&
            EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_GET_TAG, tagSize, sealed.data() + record.size()) ==
                1);
    return sealed;
}

} // namespace

Bytes fromBase64Url(std::string_view text)
{
    std::string padded(text);
    std::ranges::replace(padded, '-', '+');
    std::ranges::replace(padded, '_', '/');
    padded.append((4 - padded.size() % 4) % 4, '=');
    Bytes bytes(padded.size() / 4 * 3);
    require(EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char *>(padded.data()),
                            static_cast<int>(padded.size())) >= 0);
    bytes.resize(text.size() * 3 / 4);
    return bytes;
}

WebPushSender::WebPushSender(const Bytes &deviceToken)
{
    const auto json = nlohmann::json::parse(deviceToken);
    endpoint_ = json.at("endpoint").get<std::string>();
    deviceKey_ = fromBase64Url(json.at("p256dh").get<std::string>());
    authSecret_ = fromBase64Url(json.at("auth").get<std::string>());
}

Bytes WebPushSender::encrypt(std::string_view message, const Shape &shape) const
{
    const Key ours(EVP_EC_gen("P-256"));
    const Bytes ourKey = publicKeyOf(ours.get());
    Bytes salt(16);
    require(RAND_bytes(salt.data(), static_cast<int>(salt.size())) == 1);
    const Bytes input = hmac(hmac(authSecret_, sharedSecret(ours.get(), deviceKey_)),
                             text("WebPush: info", deviceKey_, ourKey));
    const Bytes pseudorandom = hmac(salt, input);
    const Bytes key = hmac(pseudorandom, text("Content-Encoding: aes128gcm"), 16);
    const Bytes nonce = hmac(pseudorandom, text("Content-Encoding: nonce"), 12);

    Bytes record(message.begin(), message.end());
    record.push_back(shape.delimiter);
    record.resize(record.size() + shape.padding);
    const Bytes sealed = seal(key, nonce, record);
    Bytes whole = salt;
    for (int shift = 24; shift >= 0; shift -= 8)
        whole.push_back(static_cast<std::uint8_t>(shape.recordSize >> shift));
    whole.push_back(static_cast<std::uint8_t>(ourKey.size()));
    whole.insert(whole.end(), ourKey.begin(), ourKey.end());
    whole.insert(whole.end(), sealed.begin(), sealed.end());
    return whole;
}

} // namespace skyflare
