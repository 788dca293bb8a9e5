#pragma once

#include "platform/base/Result.h"
#include "platform/desktop/UserNotificationCenter.h"

#include <cstdint>
#include <span>

namespace skyflare {

/// What a sender wants to be shown, from the decrypted text of its message: a JSON object with "title" and
/// "body", one of which may be missing, and "id", which may be missing too; any other text is the body alone.
///
/// A title has at most 100 characters, a body 1000: the rest is left out for an ellipsis. Control characters
/// become blanks, but for the line ends of a body.
/// @return an error where there is nothing to show, or the text is no UTF-8. What is missing is empty.
///
/// Any thread.
Result<UserNotification> readPushMessage(std::span<const std::uint8_t> text);

} // namespace skyflare
