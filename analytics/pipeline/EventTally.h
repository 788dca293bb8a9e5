#pragma once

#include "analytics/model/APMFailureCode.h"
#include "platform/base/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace skyflare {

/// What the engine counts. The order is that of the table in EventTally.cpp, and the order in which it
/// happens to one event: into the engine, to one end, into a row, out of it.
enum class LedgerEntry {
    // Events that came in.
    Accepted, ///< from a caller, before anything is known of it
    Raised,   ///< by the engine itself: "_err" and its like
    // Their ends. Each event comes to exactly one.
    Disabled, ///< collection was off
    Refused,  ///< the whole event: for its name or origin, or as a view of no screen
    LimitedAll,
    LimitedError,
    LimitedPublic,
    LimitedNames, ///< one name too many
    Failed,       ///< the database could not take it
    Abandoned,    ///< it came after the end, or the end did not wait for it
    Stored,       ///< its row is committed
    // Rows of waiting events, beside those stored.
    Found, ///< in the database when it was opened
    // Where rows went.
    Trimmed, ///< there were too many
    Stale,   ///< too old, or too far in the future
    Wiped,   ///< by a reset
    Lost,    ///< with a database that had to be made anew
    Bundled, ///< into a bundle for upload
    // Events of bundles that wait, beside those bundled; then where they went.
    QueueFound, ///< in the database when it was opened
    Uploaded,   ///< whoever collects them has them
    QueueStale, ///< as rows go
    QueueWiped,
    QueueLost,
    // No events: parameters and user properties.
    PartsRefused,
};
inline constexpr std::size_t ledgerEntryCount = 23;
inline constexpr std::size_t apmErrorCodeCount = 25;
inline constexpr std::size_t failureCodeCount = 15;

/// What the ledger had counted at one moment.
///
/// Four equations hold at every moment when the engine rests:
///
///     accepted + raised == disabled + refused + limited (all four) + failed + abandoned + stored + under way
///
///     found + stored == trimmed + stale + wiped + lost + bundled + rows that wait
///
///     queue found + bundled == uploaded + queue stale + queue wiped + queue lost + events in bundles
///
///     refused + parts refused == the sum over error codes == the sum over failure codes
///
/// "Under way", "rows that wait" and "events in bundles" are what is seen from outside: the
/// operations that the queues hold, and what the database counts.
///
/// Threads: any; a value.
struct EventTally {
    std::array<std::uint64_t, ledgerEntryCount> entries{};
    std::array<std::uint64_t, apmErrorCodeCount> refusalsByError{};
    std::array<std::uint64_t, failureCodeCount> refusalsByFailure{};

    [[nodiscard]] std::uint64_t count(LedgerEntry entry) const { return entries[std::size_t(entry)]; }
    void add(LedgerEntry entry, std::uint64_t events) { entries[std::size_t(entry)] += events; }

    // Every count, numbered: entries, then refusals by error, then those by failure.

    static constexpr std::size_t size = ledgerEntryCount + apmErrorCodeCount + failureCodeCount;
    [[nodiscard]] std::uint64_t &operator[](std::size_t number);
    [[nodiscard]] std::uint64_t operator[](std::size_t number) const;
    /// What it is called in files, from version to version: "stored", "error_13", "failure_2".
    [[nodiscard]] static std::string key(std::size_t number);

    /// Those that came in, without those that came to an end. Below 0 only if something is wrong.
    [[nodiscard]] std::int64_t underWay() const;
    /// The rows that should be waiting. Below 0 only if something is wrong.
    [[nodiscard]] std::int64_t waitingRows() const;
    /// The events in bundles that should be waiting. Below 0 only if something is wrong.
    [[nodiscard]] std::int64_t bundledEvents() const;

    /// What is seen from outside.
    struct Seen {
        std::int64_t eventsUnderWay = 0;
        std::int64_t waitingRows = 0;
        std::int64_t bundledEvents = 0;
    };
    /// The error names the first equation that does not hold, with both of its sides.
    [[nodiscard]] Result<> balance(const Seen &seen) const;

    /// For a person: one count a line, those by code only where there are any.
    [[nodiscard]] std::vector<std::string> lines() const;

    bool operator==(const EventTally &) const = default;
};

} // namespace skyflare
