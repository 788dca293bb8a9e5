// Any bytes as names, parameters, properties and origins, through the whole engine to its database.
#include "fuzz/Checks.h"
#include "fuzz/Input.h"
#include "tests/fakes/EngineInFolder.h"

using namespace skyflare;

namespace {

std::optional<std::string> name(Input &input)
{
    const int kind = input.byte();
    if ((kind & 7) == 0)
        return {};
    return input.text(kind >> 3);
}

void logEvent(APMAnalytics &analytics, Input &input)
{
    const int how = input.byte();
    APMAnalytics::EventOptions options;
    options.isPublicEvent = (how & 1) != 0 ? IsPublicEvent::Yes : IsPublicEvent::No;
    options.ignoreEnabled = (how & 2) != 0;
    if ((how & 4) != 0)
        options.timestamp = VirtualTime::defaultSecondsSince1970 + (how - 128) * 86'400.0;
    const std::string origin = (how & 8) != 0 ? input.text() : "app";
    analytics.logEventWithOrigin(origin, name(input), input.dictionary(how >> 4, 0), options);
}

/// @return how many events were logged
std::uint64_t call(APMAnalytics &analytics, Input &input)
{
    switch (input.byte() % 8) {
    case 0:
        analytics.setUserPropertyString(input.value(), name(input));
        return 0;
    case 1:
        analytics.setInternalUserProperty(input.value(), name(input), input.text());
        return 0;
    case 2:
        analytics.setUserID(input.value());
        return 0;
    case 3:
        analytics.setDefaultEventParameters(input.dictionary(9, 0));
        return 0;
    case 4:
        analytics.setAnalyticsCollectionEnabled(input.byte() % 3 != 0);
        return 0;
    default:
        logEvent(analytics, input);
        return 1;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    EngineInFolder engine({{"measurement.store.max_stored_events_per_app", std::int64_t{8}},
                           {"measurement.upload.max_error_events_per_day", std::int64_t{5}}});
    APMAnalytics &analytics = engine.start();
    std::uint64_t logged = 0;
    while (!input.isAtEnd())
        logged += call(analytics, input);
    engine.time.runUntilIdle();
    const EventTally tally = engine.tally();
    const auto balanced = tally.balance({.waitingRows = engine.rows()});
    require(balanced.has_value(), balanced ? "" : balanced.error().message.c_str());
    require(tally.count(LedgerEntry::Accepted) == logged, "every call counts");
    require(tally.count(LedgerEntry::Failed) == 0, "the database takes every event");

    require(engine.end(), "the engine ends in time");
    StrictMonitor monitor;
    const auto reader = MeasurementReader::open(engine.file, monitor);
    require(reader.has_value(), "the database can be read");
    std::int64_t readable = 0;
    const auto read = (*reader)->forEachWaitingEvent([&readable](const RawEvent &) { ++readable; });
    require(read.has_value() && readable == engine.rows(), "every row can be read");
    require((*reader)->status()->ledger == tally, "the ledger on the disk is the engine's");
    for (const std::string &line : engine.console.reports())
        require(validUtf8(line) == line && line.find('\n') == std::string::npos,
                "a report is one line of UTF-8");
    return 0;
}
