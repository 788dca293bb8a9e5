#pragma once

#include "platform/base/Bytes.h"
#include "platform/push/WebPushKeys.h"

#include <span>

namespace skyflare {

/// Decrypts a push message: RFC 8291 in the content coding aes128gcm of RFC 8188.
///
/// @param message  the whole body: a header of 86 bytes, which ends with the sender's public key, and one
///                 record
/// @return what the sender wrote, without its padding. Anything that is not exactly such a message for these
///         keys is an error.
///
/// Any thread.
Result<Bytes> decryptWebPush(const WebPushKeys &keys, std::span<const std::uint8_t> message);

} // namespace skyflare
