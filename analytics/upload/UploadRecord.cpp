#include "analytics/upload/UploadRecord.h"

#include <cmath>

namespace skyflare {

namespace {

constexpr std::string_view lastSuccessKey = "/mipeme/measurement/last_successful_upload";
constexpr std::string_view lastFailureKey = "/mipeme/measurement/last_failed_upload";
constexpr std::string_view lastBackoffKey = "/mipeme/measurement/last_upload_backoff";
constexpr std::string_view lastEventKey = "/mipeme/measurement/last_uploaded_event_timestamp_millis";
constexpr std::string_view suspendedUntilKey = "/mipeme/measurement/upload_suspended_until";

constexpr double latestTime = 1e15; // some 30,000 years even in milliseconds: enough for any clock
constexpr double millisecondsPerSecond = 1'000;

} // namespace

double UploadRecord::time(std::string_view key) const
{
    const double seconds = defaults_.doubleForKey(key);
    return seconds > 0 && seconds < latestTime ? seconds : 0; // which no NaN is
}

void UploadRecord::setTime(double seconds, std::string_view key)
{
    if (seconds != 0)
        defaults_.setDouble(seconds, key);
    else if (defaults_.hasObjectForKey(key))
        defaults_.removeObjectForKey(key);
}

double UploadRecord::lastSuccess() const
{
    return time(lastSuccessKey);
}

double UploadRecord::lastFailure() const
{
    return time(lastFailureKey);
}

double UploadRecord::lastBackoff() const
{
    return time(lastBackoffKey);
}

double UploadRecord::suspendedUntil() const
{
    return time(suspendedUntilKey);
}

std::int64_t UploadRecord::lastUploadedEventMilliseconds() const
{
    return static_cast<std::int64_t>(time(lastEventKey));
}

void UploadRecord::didSucceed(double now, double newestEvent)
{
    setTime(now, lastSuccessKey);
    setTime(0, lastFailureKey);
    setTime(0, lastBackoffKey);
    const double milliseconds = std::floor(newestEvent * millisecondsPerSecond);
    if (milliseconds > time(lastEventKey) && milliseconds < latestTime)
        setTime(milliseconds, lastEventKey);
}

void UploadRecord::didFail(double now)
{
    setTime(now, lastFailureKey);
}

void UploadRecord::didBackOff(double now)
{
    didFail(now);
    setTime(now, lastBackoffKey);
}

void UploadRecord::suspend(double untilUptime)
{
    setTime(untilUptime, suspendedUntilKey);
}

void UploadRecord::reset()
{
    for (const std::string_view key : {lastSuccessKey, lastFailureKey, lastEventKey, suspendedUntilKey})
        setTime(0, key);
}

} // namespace skyflare
