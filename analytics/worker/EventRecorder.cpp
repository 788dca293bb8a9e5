#include "analytics/worker/EventRecorder.h"

#include "analytics/validation/ErrorMarker.h"
#include "analytics/validation/RefusalLog.h"
#include "analytics/validation/ReservedNames.h"
#include "analytics/worker/MeasurementLog.h"

#include <algorithm>
#include <array>
#include <utility>

namespace skyflare {

namespace {

constexpr std::string_view errorName = "_err"; ///< of the event, and of its parameter with the code

constexpr std::uint64_t reportEvery = 1'000; ///< the first event dropped, and every thousandth after it

struct LimitRow {
    LimitDecision::Verdict verdict;
    LedgerEntry entry;
    LogText text;
};

using LimitVerdict = LimitDecision::Verdict;
constexpr std::array<LimitRow, 3> limitRows{{
    {LimitVerdict::TooManyEvents, LedgerEntry::LimitedAll, measurementLog::tooManyEvents},
    {LimitVerdict::TooManyErrorEvents, LedgerEntry::LimitedError, measurementLog::tooManyErrorEvents},
    {LimitVerdict::TooManyPublicEvents, LedgerEntry::LimitedPublic, measurementLog::tooManyPublicEvents},
}};

EventKind kindOf(const APMEvent &event, IsPublicEvent isPublicEvent)
{
    if (event.name == errorName)
        return EventKind::Error;
    return isPublicEvent == IsPublicEvent::Yes ? EventKind::Public : EventKind::Internal;
}

std::string errorCodeOf(const APMEvent &event)
{
    const auto found = std::ranges::find(event.parameters, errorName, &APMParameter::name);
    const auto *code = found == event.parameters.end() ? nullptr : found->value.integer();
    return code ? std::to_string(*code) : "none";
}

} // namespace

EventRecorder::EventRecorder(const Services &services, const MeasurementLimits &limits,
                             double timeZoneOffsetMinutes, DebugMode debugMode, Hooks hooks)
    : services_(services),
      limits_(limits),
      timeZoneOffsetMinutes_(timeZoneOffsetMinutes),
      debugMode_(debugMode),
      hooks_(std::move(hooks))
{
}

void EventRecorder::handleEvent(APMEvent event, IsPublicEvent isPublicEvent)
{
    if (!services_.journal.begin()) {
        services_.ledger.count(LedgerEntry::Failed);
        return;
    }
    if (const std::string_view stored = storedEventName(event.name); stored != event.name)
        event.name = stored;
    if (hooks_.processSessionFromEvent)
        hooks_.processSessionFromEvent(event);
    if (!isWithinDay(event, isPublicEvent) || !isWithinNames(event, isPublicEvent))
        return;
    const IsRealtime isRealtime = isRealtimeEvent(services_.journal.dailyCounts(), limits_.daily, debugMode_);
    services_.journal.writeEvent(std::move(event), isRealtime);
    if (hooks_.updateSchedule)
        hooks_.updateSchedule();
}

void EventRecorder::raise(const Refusal &refusal, double timestamp)
{
    services_.ledger.count(LedgerEntry::Raised);
    handleEvent(errorEvent(refusal, timestamp, services_.monitor), IsPublicEvent::No);
}

APMDailyCounts &EventRecorder::countsOfToday()
{
    if (!midnightOffset_)
        midnightOffset_ = services_.config.midnightOffset(timeZoneOffsetMinutes_);
    APMDailyCounts &counts = services_.journal.dailyCounts();
    startDay(counts, dayNumber(services_.clock.secondsSince1970(), *midnightOffset_));
    return counts;
}

bool EventRecorder::isWithinDay(const APMEvent &event, IsPublicEvent isPublicEvent)
{
    const LimitDecision decision =
        shouldProcessEvent(countsOfToday(), limits_.daily, kindOf(event, isPublicEvent));
    if (decision.verdict == LimitVerdict::Process)
        return true;
    report(decision, event);
    if (decision.verdict == LimitVerdict::TooManyPublicEvents)
        raise({CallSite::PublicEventCount, FailureCode::Valid, event.name}, event.timestamp);
    return false;
}

void EventRecorder::report(const LimitDecision &decision, const APMEvent &event)
{
    const auto *row = std::ranges::find(limitRows, decision.verdict, &LimitRow::verdict);
    services_.ledger.count(row->entry);
    if (!decision.isReported)
        return;
    const bool isError = decision.verdict == LimitVerdict::TooManyErrorEvents;
    writeLog(services_.monitor, row->text,
             measurementLog::withLimit(isError ? errorCodeOf(event) : described(event.name), decision.limit));
}

/// Only a name of the app's own can be one too many. The event takes back what it had added to the day.
bool EventRecorder::isWithinNames(const APMEvent &event, IsPublicEvent isPublicEvent)
{
    EventJournal &journal = services_.journal;
    if (isPublicEvent == IsPublicEvent::No || event.name.starts_with('_') ||
        journal.publicEventNameCount() < limits_.publicEventNames)
        return true;
    // One that cannot be looked up is not held against the event.
    if (const auto isKnown = journal.knowsEventName(event.name); !isKnown || *isKnown)
        return true;
    APMDailyCounts &counts = journal.dailyCounts();
    --counts.eventsCount;
    --counts.publicEventsCount;
    services_.ledger.count(LedgerEntry::LimitedNames);
    if (namesDropped_++ % reportEvery == 0)
        writeLog(services_.monitor, measurementLog::tooManyEventNames,
                 measurementLog::withLimit(described(event.name), limits_.publicEventNames));
    raise({CallSite::EventNameCount, FailureCode::Valid, event.name}, event.timestamp);
    return false;
}

} // namespace skyflare
