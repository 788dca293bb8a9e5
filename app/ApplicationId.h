#pragma once

namespace skyflare {

/// The app's name among desktop files, icons, software centres and on the message bus.
inline constexpr const char *applicationId = SKYFLARE_APP_ID;

} // namespace skyflare
