#pragma once

#include "platform/desktop/NotificationBoard.h"
#include "platform/linux/MessageBus.h"

#include <memory>
#include <string>

namespace skyflare {

/// Where notifications are shown: by the desktop itself, or in a sandbox by its portal. Main.
/// @param applicationId  the name of the app's desktop file
std::shared_ptr<NotificationBoard> makeNotificationBoard(MessageBus &sessionBus,
                                                         const std::string &applicationId);

} // namespace skyflare
