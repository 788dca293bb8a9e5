#pragma once

#include "platform/linux/MessageBus.h"

#include <optional>
#include <string>

namespace skyflare {

/// Tells the desktop's portals which app calls them: otherwise they must guess it, and refuse some things to
/// whom they do not know. For the session bus. Portals before 1.20 do not take it, which is no fault; in a
/// sandbox nothing need be said.
std::optional<BusGreeting> portalRegistration(const std::string &applicationId);

} // namespace skyflare
