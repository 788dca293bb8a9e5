#include "analytics/sessions/SessionRecord.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

namespace skyflare {

namespace {

constexpr std::string_view sessionTimeoutIntervalKey = "/mipeme/measurement/session_timeout_interval";
constexpr std::string_view lastActivityTimeKey = "/mipeme/measurement/last_session_activity_time";
constexpr std::string_view sessionNumberKey = "/mipeme/measurement/session_number";
constexpr std::string_view sessionIDKey = "/mipeme/measurement/session_id";

constexpr double longestUnwritten = 1; // seconds of activity

std::optional<double> soundSeconds(const UserDefaults &defaults, std::string_view key)
{
    if (!defaults.hasObjectForKey(key))
        return std::nullopt;
    const double seconds = defaults.doubleForKey(key);
    return std::isfinite(seconds) && seconds >= 0 ? std::optional(seconds) : std::nullopt;
}

std::int64_t soundNumber(const UserDefaults &defaults, std::string_view key)
{
    const std::int64_t number = defaults.integerForKey(key);
    return number < std::numeric_limits<std::int64_t>::max() ? std::max<std::int64_t>(number, 0) : 0;
}

} // namespace

SessionRecord::SessionRecord(UserDefaults &defaults)
    : defaults_(defaults),
      sessionNumber_(soundNumber(defaults, sessionNumberKey)),
      sessionID_(soundNumber(defaults, sessionIDKey)),
      lastActivityTime_(soundSeconds(defaults, lastActivityTimeKey).value_or(0)),
      writtenActivityTime_(lastActivityTime_)
{
}

std::optional<double> SessionRecord::sessionTimeoutInterval() const
{
    return soundSeconds(defaults_, sessionTimeoutIntervalKey);
}

void SessionRecord::setSessionTimeoutInterval(double seconds)
{
    defaults_.setDouble(seconds, sessionTimeoutIntervalKey);
}

void SessionRecord::setLastActivityTime(double secondsSince1970)
{
    lastActivityTime_ = secondsSince1970;
    if (std::abs(lastActivityTime_ - writtenActivityTime_) <= longestUnwritten)
        return;
    writtenActivityTime_ = lastActivityTime_;
    defaults_.setDouble(lastActivityTime_, lastActivityTimeKey);
}

void SessionRecord::beginSession(double secondsSince1970)
{
    sessionID_ = static_cast<std::int64_t>(secondsSince1970);
    // The activity last: a process that ends in between has begun no session, and at worst used up a number.
    defaults_.setInteger(++sessionNumber_, sessionNumberKey);
    defaults_.setInteger(sessionID_, sessionIDKey);
    writtenActivityTime_ = lastActivityTime_ = secondsSince1970;
    defaults_.setDouble(lastActivityTime_, lastActivityTimeKey);
}

void SessionRecord::wipe()
{
    sessionNumber_ = sessionID_ = 0;
    writtenActivityTime_ = lastActivityTime_ = 0;
    for (const std::string_view key : {sessionNumberKey, sessionIDKey, lastActivityTimeKey})
        defaults_.removeObjectForKey(key);
}

} // namespace skyflare
