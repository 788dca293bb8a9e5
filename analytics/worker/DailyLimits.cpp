#include "analytics/worker/DailyLimits.h"

#include <cmath>
#include <limits>

namespace skyflare {

namespace {

constexpr double secondsPerDay = 86'400;
constexpr std::int64_t reportEvery = 1'000;

/// The counts are read from a file: whatever stands there must not overflow.
void countOne(std::int64_t &count)
{
    if (count < std::numeric_limits<std::int64_t>::max())
        ++count;
}

/// @param count  as it was before this event
LimitDecision over(LimitDecision::Verdict verdict, std::int64_t count, std::int64_t limit)
{
    return {verdict, limit, (count - limit) % reportEvery == 0};
}

void add(APMDailyCounts &counts, EventKind kind)
{
    if (kind == EventKind::Error) {
        countOne(counts.errorEventsCount);
        return;
    }
    countOne(counts.eventsCount);
    if (kind == EventKind::Public)
        countOne(counts.publicEventsCount);
}

} // namespace

DailyLimits DailyLimits::of(const APMRemoteConfig &settings)
{
    return {.events = settings.integer(APMSetting::MaxEventsPerDay),
            .publicEvents = settings.integer(APMSetting::MaxPublicEventsPerDay),
            .errorEvents = settings.integer(APMSetting::MaxErrorEventsPerDay),
            .realtimeEvents = settings.integer(APMSetting::MaxRealtimeEventsPerDay)};
}

std::int64_t dayNumber(double now, double midnightOffset)
{
    const double day = std::floor((now - midnightOffset) / secondsPerDay);
    constexpr double farthest = 1e15; // days that a double still tells apart
    if (!(std::abs(day) <= farthest))
        return 0;
    return static_cast<std::int64_t>(day);
}

void startDay(APMDailyCounts &counts, std::int64_t day)
{
    if (counts.day != day)
        counts = {.day = day};
}

LimitDecision shouldProcessEvent(APMDailyCounts &dailyCounts, const DailyLimits &limits, EventKind kind)
{
    using Verdict = LimitDecision::Verdict;
    const APMDailyCounts before = dailyCounts;
    add(dailyCounts, kind);

    if (before.eventsCount >= limits.events)
        return over(Verdict::TooManyEvents, before.eventsCount, limits.events);
    // Deliberate: nothing is taken back here, for an error has added nothing to the count of all events.
    if (kind == EventKind::Error && before.errorEventsCount >= limits.errorEvents)
        return over(Verdict::TooManyErrorEvents, before.errorEventsCount, limits.errorEvents);
    if (kind == EventKind::Public && before.publicEventsCount >= limits.publicEvents) {
        dailyCounts.eventsCount = before.eventsCount;
        return over(Verdict::TooManyPublicEvents, before.publicEventsCount, limits.publicEvents);
    }
    return {};
}

IsRealtime isRealtimeEvent(APMDailyCounts &dailyCounts, const DailyLimits &limits, DebugMode debugMode)
{
    if (debugMode == DebugMode::Off || dailyCounts.realtimeDCUEventsCount >= limits.realtimeEvents)
        return IsRealtime::No;
    countOne(dailyCounts.realtimeDCUEventsCount);
    return IsRealtime::Yes;
}

} // namespace skyflare
