#pragma once

#include "analytics/pipeline/EventTally.h"

#include <atomic>

namespace skyflare {

/// Counts what becomes of every event.
///
/// Count an event as accepted before it is handed on, and as stored when its row is committed, not before: a
/// transaction that is rolled back has stored nothing. Then no tally, taken while others count, ever shows
/// more ends than events, or more rows gone than came.
///
/// Threads: any, without a lock; one count is a few nanoseconds.
class EventLedger {
public:
    void count(LedgerEntry entry, std::uint64_t times = 1);

    enum class RefusedWhat { Event, Part };
    /// A refusal, with its codes; of an event it is its end.
    void countRefusal(RefusedWhat what, APMErrorCode errorCode, FailureCode failureCode);

    /// What was counted elsewhere: in an earlier run, in a transaction.
    void add(const EventTally &counted);

    [[nodiscard]] EventTally tally() const;

private:
    using Counter = std::atomic<std::uint64_t>;

    // Callers count what they hand over, the worker the rest: these two must not share a cache line.
    struct alignas(64) CallersCounter {
        Counter count{0};
    };

    CallersCounter accepted_;
    alignas(64) std::array<Counter, ledgerEntryCount> entries_{}; ///< the first one stands in accepted_
    std::array<Counter, apmErrorCodeCount> refusalsByError_{};
    std::array<Counter, failureCodeCount> refusalsByFailure_{};

    [[nodiscard]] const Counter &counter(std::size_t entry) const
    {
        return entry == std::size_t(LedgerEntry::Accepted) ? accepted_.count : entries_[entry];
    }
};

} // namespace skyflare
