#pragma once

#include "platform/linux/MessageBus.h"

/// The desktop portal (xdg-desktop-portal) on the session bus.
///
/// Threads: any.
namespace skyflare::portal {

inline constexpr const char *service = "org.freedesktop.portal.Desktop";
inline constexpr const char *path = "/org/freedesktop/portal/desktop";

/// Asks for a property of one of its interfaces; propertyIn() reads the answer.
BusCall propertyCall(const char *interface, const char *name);
Variant propertyIn(const BusAnswer &answer);

} // namespace skyflare::portal
