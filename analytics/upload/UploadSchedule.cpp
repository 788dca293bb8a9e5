#include "analytics/upload/UploadSchedule.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace skyflare {

namespace {

/// 0 stays 0.
double foldedIntoPast(double time, double now)
{
    return now - std::abs(time - now);
}

double intervalOf(const UploadState &state, const APMRemoteConfig &settings)
{
    const bool isRealtime = state.isDebug || state.hasRealtime;
    return settings.number(isRealtime ? APMSetting::RealtimeUploadInterval : APMSetting::UploadInterval);
}

/// @return 0: the tries are used up
double retryTime(double next, double lastFailure, const APMRemoteConfig &settings)
{
    double pause = settings.number(APMSetting::RetryTime);
    for (std::int64_t i = 0; i < settings.integer(APMSetting::RetryCount); ++i, pause *= 2) {
        next += pause;
        if (next > lastFailure)
            return next;
    }
    return 0;
}

double longestPause(const APMRemoteConfig &settings)
{
    return std::ldexp(settings.number(APMSetting::RetryTime),
                      static_cast<int>(settings.integer(APMSetting::RetryCount)) - 1);
}

} // namespace

double nextUploadingTime(const UploadState &state, const APMRemoteConfig &settings, double now)
{
    const double newest = std::max(state.newestEvent, state.newestBundle);
    if (std::abs(newest) < std::numeric_limits<double>::epsilon())
        return 0;
    const double interval = intervalOf(state, settings);
    const double latest = foldedIntoPast(newest, now);
    double next = latest + settings.number(APMSetting::InitialUploadDelayTime);
    if (state.lastSuccess != 0 && std::abs(state.lastSuccess - now) < interval)
        next = state.lastSuccess + interval;

    if (state.lastFailure != 0 && state.lastFailure >= latest)
        return retryTime(next, state.lastFailure, settings);
    if (state.isDebug)
        return std::min(next, latest + settings.number(APMSetting::DebugUploadInterval));
    return next;
}

double afterBackoff(double next, const UploadState &state, const APMRemoteConfig &settings)
{
    if (next == 0 || state.lastBackoff == 0)
        return next;
    return std::max(next, state.lastBackoff + settings.number(APMSetting::BackoffPeriod));
}

double nextTryTime(UploadState state, const APMRemoteConfig &settings, double now)
{
    state.lastFailure = foldedIntoPast(state.lastFailure, now);
    state.lastBackoff = foldedIntoPast(state.lastBackoff, now);
    double next = nextUploadingTime(state, settings, now);
    const bool isDataOfFuture = std::max(state.newestEvent, state.newestBundle) > now;
    if (next == 0 && isDataOfFuture)
        next = state.lastFailure + longestPause(settings);
    return afterBackoff(next, state, settings);
}

double suspensionLeft(double suspendedUntil, double uptime)
{
    const double left = suspendedUntil - uptime;
    return left > 0 && left <= suspensionSeconds ? left : 0;
}

} // namespace skyflare
