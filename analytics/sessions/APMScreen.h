#pragma once

#include "analytics/model/APMValue.h"

#include <cstdint>
#include <optional>
#include <string>

namespace skyflare {

/// What the user sees, by the names that events carry.
///
/// Threads: any; a value.
struct APMScreen {
    std::optional<std::string> name = {};      ///< as the app calls it; nothing: the app did not say
    std::optional<std::string> className = {}; ///< of the controller, or what the app says in its place
    std::int64_t instanceID = 0;               ///< counts the changes of the screen
    bool isManuallySet = false;     ///< by setScreenName:screenClass:, over the controller that is shown
    bool isManuallyTracked = false; ///< the app said that it is shown; else a controller appeared
    double eventTimestamp = 0;      ///< when it was shown, in seconds since 1970

    bool operator==(const APMScreen &) const = default;
};

/// "_sn", "_sc" and "_si", as far as they are known; none without a screen.
[[nodiscard]] APMParameters screenParametersOf(const std::optional<APMScreen> &screen);
/// The same of the screen before: "_pn", "_pc" and "_pi".
[[nodiscard]] APMParameters previousScreenParametersOf(const std::optional<APMScreen> &screen);
/// Whether the parameters name a screen of their own, be it in part.
[[nodiscard]] bool haveScreen(const APMParameters &parameters);

} // namespace skyflare
