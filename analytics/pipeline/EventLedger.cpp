#include "analytics/pipeline/EventLedger.h"

namespace skyflare {

namespace {

template <std::size_t size>
void copyCounts(const std::array<std::atomic<std::uint64_t>, size> &from, std::array<std::uint64_t, size> &to)
{
    for (std::size_t i = 0; i < size; ++i)
        to[i] = from[i].load(std::memory_order_relaxed);
}

} // namespace

// Released here and acquired in tally(): who sees an event's end sees what went before it.
void EventLedger::count(LedgerEntry entry, std::uint64_t times)
{
    Counter &counted =
        entry == LedgerEntry::Accepted ? accepted_.count : entries_[static_cast<std::size_t>(entry)];
    counted.fetch_add(times, std::memory_order_release);
}

void EventLedger::countRefusal(RefusedWhat what, APMErrorCode errorCode, FailureCode failureCode)
{
    refusalsByError_[static_cast<std::size_t>(errorCode)].fetch_add(1, std::memory_order_relaxed);
    refusalsByFailure_[static_cast<std::size_t>(failureCode)].fetch_add(1, std::memory_order_relaxed);
    count(what == RefusedWhat::Event ? LedgerEntry::Refused : LedgerEntry::PartsRefused);
}

void EventLedger::add(const EventTally &counted)
{
    for (std::size_t code = 0; code < apmErrorCodeCount; ++code)
        refusalsByError_[code].fetch_add(counted.refusalsByError[code], std::memory_order_relaxed);
    for (std::size_t code = 0; code < failureCodeCount; ++code)
        refusalsByFailure_[code].fetch_add(counted.refusalsByFailure[code], std::memory_order_relaxed);
    for (std::size_t entry = 0; entry < ledgerEntryCount; ++entry)
        count(static_cast<LedgerEntry>(entry), counted.entries[entry]);
}

EventTally EventLedger::tally() const
{
    EventTally tally;
    // Deliberate: last things first, so that a count never lacks the one that it follows from.
    for (std::size_t entry = ledgerEntryCount; entry-- > 0;)
        tally.entries[entry] = counter(entry).load(std::memory_order_acquire);
    copyCounts(refusalsByError_, tally.refusalsByError);
    copyCounts(refusalsByFailure_, tally.refusalsByFailure);
    return tally;
}

} // namespace skyflare
