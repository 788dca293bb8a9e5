#pragma once

#include "analytics/upload/APMRemoteConfig.h"

namespace skyflare {

/// What is waiting and how the last uploads went. All times are seconds since 1970 by the machine's clock,
/// which somebody may have set since; 0: there is none, it never was.
///
/// Threads: any; a value.
struct UploadState {
    double newestEvent = 0;  ///< raw
    double newestBundle = 0; ///< its end
    bool hasRealtime = false;
    bool isDebug = false;
    double lastSuccess = 0;
    double lastFailure = 0;
    double lastBackoff = 0; ///< when a server last said that it takes nothing for now
};

// Decisions about time, as functions of what is known. Threads: any.

// nextUploadingTime
/// When what is waiting may go, the back-off aside: seconds since 1970, possibly in the past. 0: nothing is
/// scheduled, as nothing waits, or the tries are used up until there are new events. Where the newest data
/// lies in the future it counts as lying as far in the past.
[[nodiscard]] double nextUploadingTime(const UploadState &state, const APMRemoteConfig &settings, double now);

/// The time from nextUploadingTime(), but not within the back-off period. 0 stays 0.
[[nodiscard]] double afterBackoff(double next, const UploadState &state, const APMRemoteConfig &settings);

/// Both of them, and safe from clocks that somebody has set back, so that nothing waits for one to come round
/// again: a failure or back-off in the future counts as lying as far in the past, too; and where the newest
/// data lies in the future, so that no event will ever be newer, used-up tries go on with the longest pause
/// between two of them.
[[nodiscard]] double nextTryTime(UploadState state, const APMRemoteConfig &settings, double now);

/// How long uploads are suspended after uploaded bundles could not be deleted.
inline constexpr double suspensionSeconds = 3'600;

/// How long uploads are still suspended; 0: they are not. A time further ahead than a suspension lasts is
/// from before the machine was restarted, and does not hold.
/// @param suspendedUntil, uptime  seconds of uptime
/// @return seconds
[[nodiscard]] double suspensionLeft(double suspendedUntil, double uptime);

} // namespace skyflare
