#pragma once

#include <string_view>

namespace skyflare {

/// Posted on main when the app comes before the user, and when it no longer is: hidden, minimised, locked,
/// asleep, or about to end. They take turns, and the first one comes first.
inline constexpr std::string_view applicationDidBecomeActiveNotification =
    "UIApplicationDidBecomeActiveNotification";
inline constexpr std::string_view applicationWillResignActiveNotification =
    "UIApplicationWillResignActiveNotification";

} // namespace skyflare
