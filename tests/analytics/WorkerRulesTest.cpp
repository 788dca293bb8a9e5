#include "analytics/worker/DailyLimits.h"
#include "analytics/worker/MeasurementConfig.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>

#include <array>
#include <limits>

namespace skyflare {

TEST_CASE("an event over a daily limit is dropped, counted, and reported every thousandth time")
{
    using enum EventKind;
    using enum LimitDecision::Verdict;
    const DailyLimits limits{.events = 20, .publicEvents = 10, .errorEvents = 5};
    struct Row {
        const char *name;
        EventKind kind;
        std::array<std::int64_t, 3> before; ///< all, public, errors
        LimitDecision expected;
        std::array<std::int64_t, 3> after;
    };
    const Row rows[] = {
        {"one too many", Public, {12, 10, 0}, {TooManyPublicEvents, 10, true}, {12, 11, 0}},
        {"a thousand later", Public, {12, 1010, 0}, {TooManyPublicEvents, 10, true}, {12, 1011, 0}},
        {"public ones do not bind others", Internal, {12, 99, 0}, {}, {13, 99, 0}},
        {"both limits: all decides", Public, {20, 10, 0}, {TooManyEvents, 20, true}, {21, 11, 0}},
        {"an error over the limit of all", Error, {20, 0, 0}, {TooManyEvents, 20, true}, {20, 0, 1}},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        APMDailyCounts counts{.eventsCount = row.before[0],
                              .publicEventsCount = row.before[1],
                              .errorEventsCount = row.before[2]};
        CHECK(shouldProcessEvent(counts, limits, row.kind) == row.expected);
        CHECK(std::array{counts.eventsCount, counts.publicEventsCount, counts.errorEventsCount} == row.after);
    }
    const std::int64_t most = std::numeric_limits<std::int64_t>::max();
    APMDailyCounts damaged{.eventsCount = most, .publicEventsCount = most};
    CHECK(shouldProcessEvent(damaged, limits, Public).verdict == TooManyEvents);
}

TEST_CASE("a day begins at the midnight that was kept first, and starts every count anew")
{
    CHECK(dayNumber(86'400 * 3.0 - 3601, -3600) == 2);
    CHECK(dayNumber(86'400 * 3.0 - 3600, -3600) == 3);
    CHECK(dayNumber(3599, 3600) == -1);
    CHECK(dayNumber(std::numeric_limits<double>::infinity(), 0) == 0);

    APMDailyCounts counts{.day = 3, .conversionsCount = 1, .eventsCount = 2, .realtimeDCUEventsCount = 9};
    startDay(counts, 3);
    CHECK(counts.eventsCount == 2);
    const DailyLimits limits; // ten in real time
    CHECK(isRealtimeEvent(counts, limits, DebugMode::Off) == IsRealtime::No);
    CHECK(isRealtimeEvent(counts, limits, DebugMode::On) == IsRealtime::Yes);
    CHECK(isRealtimeEvent(counts, limits, DebugMode::On) == IsRealtime::No);
    startDay(counts, 2); // also when the clock was set back
    CHECK(counts == APMDailyCounts{.day = 2});

    const TemporaryFolder folder;
    RecordingConsole console;
    UserDefaults defaults(folder / "measurement.plist", console);
    CHECK(MeasurementConfig(defaults).midnightOffset(60) == -3600);
    MeasurementConfig config(defaults);
    CHECK(config.midnightOffset(-120) == -3600);
    const double nan = std::numeric_limits<double>::quiet_NaN(); // a file that somebody has edited
    defaults.setDouble(nan, "/mipeme/measurement/midnight_offset");
    config.setLastStaleDataDeletion(nan);
    CHECK(config.midnightOffset(-120) == 7200);
    CHECK(config.lastStaleDataDeletion() == 0);
}

} // namespace skyflare
