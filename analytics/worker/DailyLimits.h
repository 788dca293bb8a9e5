#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/store/AppMetadataTable.h"
#include "analytics/store/RawEventTable.h"
#include "analytics/upload/APMRemoteConfig.h"

#include <cstdint>

namespace skyflare {

/// How many events a day may have.
///
/// Threads: any; a value.
struct DailyLimits {
    std::int64_t events = 100'000;
    std::int64_t publicEvents = 50'000;
    std::int64_t errorEvents = 1'000;
    std::int64_t realtimeEvents = 10;

    static DailyLimits of(const APMRemoteConfig &settings);
};

enum class EventKind { Public, Internal, Error };

/// What becomes of one event under the limits.
struct LimitDecision {
    enum class Verdict { Process, TooManyEvents, TooManyErrorEvents, TooManyPublicEvents };

    Verdict verdict = Verdict::Process;
    std::int64_t limit = 0;  ///< the one that was reached
    bool isReported = false; ///< the first one over the limit, and every thousandth after it

    bool operator==(const LimitDecision &) const = default;
};

/// The number of the day, by a midnight that may lie anywhere.
/// @param now, midnightOffset  seconds since 1970, seconds
[[nodiscard]] std::int64_t dayNumber(double now, double midnightOffset);

/// Starts every count anew where `day` is not the day that was counted last.
void startDay(APMDailyCounts &counts, std::int64_t day);

// shouldProcessEvent:dailyCounts:isPublicEvent:
/// Counts the event and says whether it is kept. One that is dropped is counted too, so that the excess over
/// a limit keeps growing; only one dropped as an error or as public takes back what it had added to the count
/// of all events.
[[nodiscard]] LimitDecision shouldProcessEvent(APMDailyCounts &dailyCounts, const DailyLimits &limits,
                                               EventKind kind);

enum class DebugMode { Off, On };
// isRealtimeEvent:dailyCounts:
/// Whether the event has to be uploaded at once, and counts it if so: in debug mode, as long as the day's
/// limit has not been reached.
[[nodiscard]] IsRealtime isRealtimeEvent(APMDailyCounts &dailyCounts, const DailyLimits &limits,
                                         DebugMode debugMode);

} // namespace skyflare
