#include "analytics/worker/MeasurementConfig.h"

#include <cmath>

namespace skyflare {

namespace {

constexpr std::string_view lastStaleDataDeletionKey = "/mipeme/measurement/last_stale_data_deletion";
constexpr std::string_view midnightOffsetKey = "/mipeme/measurement/midnight_offset";

constexpr double secondsPerMinute = 60;
constexpr double secondsPerDay = 86'400;

} // namespace

double MeasurementConfig::lastStaleDataDeletion() const
{
    const double seconds = defaults_.doubleForKey(lastStaleDataDeletionKey);
    return std::isfinite(seconds) ? seconds : 0;
}

void MeasurementConfig::setLastStaleDataDeletion(double secondsSince1970)
{
    defaults_.setDouble(secondsSince1970, lastStaleDataDeletionKey);
}

double MeasurementConfig::midnightOffset(double timeZoneOffsetMinutes)
{
    if (const auto kept = keptMidnightOffset())
        return *kept;
    // East of Greenwich, where the offset is positive, a day begins before it does in UTC.
    const double offset = 0 - timeZoneOffsetMinutes * secondsPerMinute;
    defaults_.setDouble(offset, midnightOffsetKey);
    return offset;
}

std::optional<double> MeasurementConfig::keptMidnightOffset() const
{
    if (!defaults_.hasObjectForKey(midnightOffsetKey))
        return std::nullopt;
    const double kept = defaults_.doubleForKey(midnightOffsetKey);
    return std::abs(kept) < secondsPerDay ? std::optional(kept) : std::nullopt;
}

} // namespace skyflare
