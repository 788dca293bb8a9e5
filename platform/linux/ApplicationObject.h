#pragma once

#include "platform/linux/MessageBus.h"

#include <functional>
#include <string>

namespace skyflare {

/// How the desktop asks the program to show itself over the session bus: org.freedesktop.Application, at the
/// path that belongs to the program's name. Files and named actions are no different from just showing.
///
/// Offered as long as somebody has the subscription; for a name that is claimed later.
/// @param activated  called on the bus's queue; the token brings a window to the front on Wayland, and may be
///                   empty
[[nodiscard]] MessageBus::Subscription
offerApplicationObject(MessageBus &sessionBus, const std::string &applicationId,
                       std::function<void(const std::string &activationToken)> activated);

} // namespace skyflare
