#pragma once

#include "platform/base/Bytes.h"
#include "platform/push/WebPushKeys.h"

#include <string>
#include <string_view>

namespace skyflare {

/// Whether a push service may have given us `endpoint`: an http or https address of at most 1000 visible
/// ASCII characters.
bool isPushEndpoint(std::string_view endpoint);

/// All that a sender needs to reach this device, as one line of JSON: the address that it posts to, and what
/// it encrypts with, both in base64url without padding.
///
///     {"endpoint":"https://push.example/…","p256dh":"BCVx…","auth":"BTBZ…"}
Bytes deviceTokenFor(const std::string &endpoint, const WebPushKeys &keys);

} // namespace skyflare
