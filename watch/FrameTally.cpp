#include "watch/FrameTally.h"

#include <algorithm>

namespace skyflare {
namespace {

/// No photo takes this long from its trigger to its row; a trigger older than that came to nothing.
constexpr double longestCaptureSeconds = 5;

} // namespace

void FrameTally::didMeasure(const FrameMeasurement &measurement)
{
    const std::lock_guard lock(mutex_);
    counts_.triggers += measurement.triggered ? 1 : 0;
    counts_.lastStreamTime = measurement.streamTime;
    if (measurement.captured)
        waiting_.push_back({measurement.streamTime, measurement.difference, clock_.secondsSince1970()});
    if (csv_)
        csv_->write(measurement);
}

std::optional<FrameTally::Trigger> FrameTally::takeTrigger(double createdDate)
{
    const std::lock_guard lock(mutex_);
    auto match = std::ranges::find(waiting_, createdDate, &Trigger::secondsSince1970);
    if (match == waiting_.end())
        match = std::ranges::find_if(waiting_, [createdDate](const Trigger &trigger) {
            return trigger.secondsSince1970 >= createdDate - longestCaptureSeconds;
        });
    if (match == waiting_.end())
        return {};
    const Trigger trigger = *match;
    waiting_.erase(waiting_.begin(), match + 1);
    return trigger;
}

FrameTally::Counts FrameTally::counts() const
{
    const std::lock_guard lock(mutex_);
    return counts_;
}

Result<> FrameTally::finish()
{
    const std::lock_guard lock(mutex_);
    return csv_ ? csv_->finish() : Result<>{};
}

} // namespace skyflare
