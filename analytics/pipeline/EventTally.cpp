#include "analytics/pipeline/EventTally.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <span>
#include <string_view>

namespace skyflare {

namespace {

enum class Side { EventIn, EventEnd, RowIn, RowOut, QueueIn, QueueOut, Part };

struct EntryRow {
    LedgerEntry entry;
    Side side;
    std::string_view key; ///< stands in files: it never changes
    std::string_view label;
};

constexpr std::array<EntryRow, ledgerEntryCount> entryRows{{
    {LedgerEntry::Accepted, Side::EventIn, "accepted", "events accepted"},
    {LedgerEntry::Raised, Side::EventIn, "raised", "events raised by the engine"},
    {LedgerEntry::Disabled, Side::EventEnd, "disabled", "  dropped, collection was off"},
    {LedgerEntry::Refused, Side::EventEnd, "refused", "  refused"},
    {LedgerEntry::LimitedAll, Side::EventEnd, "limited_all", "  over the day's limit of events"},
    {LedgerEntry::LimitedError, Side::EventEnd, "limited_error", "  over the day's limit of error events"},
    {LedgerEntry::LimitedPublic, Side::EventEnd, "limited_public", "  over the day's limit of public events"},
    {LedgerEntry::LimitedNames, Side::EventEnd, "limited_names", "  over the limit of event names"},
    {LedgerEntry::Failed, Side::EventEnd, "failed", "  not taken by the database"},
    {LedgerEntry::Abandoned, Side::EventEnd, "abandoned", "  left behind at the end"},
    {LedgerEntry::Stored, Side::EventEnd, "stored", "  stored"},
    {LedgerEntry::Found, Side::RowIn, "found", "rows found at start"},
    {LedgerEntry::Trimmed, Side::RowOut, "trimmed", "  trimmed"},
    {LedgerEntry::Stale, Side::RowOut, "stale", "  deleted as stale"},
    {LedgerEntry::Wiped, Side::RowOut, "wiped", "  wiped by a reset"},
    {LedgerEntry::Lost, Side::RowOut, "lost", "  lost with a damaged database"},
    {LedgerEntry::Bundled, Side::RowOut, "bundled", "  bundled for upload"},
    {LedgerEntry::QueueFound, Side::QueueIn, "queue_found", "events found in bundles at start"},
    {LedgerEntry::Uploaded, Side::QueueOut, "uploaded", "  uploaded"},
    {LedgerEntry::QueueStale, Side::QueueOut, "queue_stale", "  deleted with a stale bundle"},
    {LedgerEntry::QueueWiped, Side::QueueOut, "queue_wiped", "  wiped with their bundle by a reset"},
    {LedgerEntry::QueueLost, Side::QueueOut, "queue_lost", "  lost with their bundle"},
    {LedgerEntry::PartsRefused, Side::Part, "parts_refused", "parameters and properties refused"},
}};
static_assert(std::ranges::all_of(entryRows, [](const EntryRow &row) {
    return &row - entryRows.data() == long(row.entry);
}));

constexpr std::array<std::string_view, apmErrorCodeCount> errorNames{
    "NoError",
    "InvalidGMPAppID",
    "InvalidEventName",
    "InvalidParameterName",
    "InvalidParameterValue",
    "ParameterLimitReached",
    "InvalidUserPropertyName",
    "UserPropertyValueTooLong",
    "EventLimitReached",
    "UserPropertyLimitReached",
    "ConversionEventLimitReached",
    "EventIsBlocked",
    "UserPropertyIsBlocked",
    "EventNameIsReserved",
    "ParameterNameIsReserved",
    "UserPropertyNameIsReserved",
    "PublicEventLimitReached",
    "TooManyExtraParamEvents",
    "ValueIsNotNumeric",
    "CurrencyCodeIsMissingOrInvalid",
    "InvalidArrayParamName",
    "InvalidArrayParamEventName",
    "InvalidArrayParamNesting",
    "CustomParamsInArrayElement",
    "ItemScopedCustomParameterLimitReached",
};

constexpr std::array<std::string_view, failureCodeCount> failureNames{
    "valid, but over a limit", "missing",           "too long",
    "illegal characters",      "reserved",          "wrong type",
    "not forwarded",           "too short",         "not numeric",
    "bad currency code",       "array not allowed", "wrong array name",
    "too many items",          "nested array",      "item is no dictionary",
};

std::int64_t sum(std::span<const std::uint64_t> counts)
{
    return static_cast<std::int64_t>(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}));
}

std::uint64_t sumOf(const EventTally &tally, Side side)
{
    std::uint64_t total = 0;
    for (const EntryRow &row : entryRows)
        total += row.side == side ? tally.count(row.entry) : 0;
    return total;
}

Result<> same(std::string_view what, std::int64_t counted, std::int64_t seen)
{
    if (counted == seen)
        return {};
    return Error{"ledger", 1,
                 std::string(what) + ": counted " + std::to_string(counted) + ", but there are " +
                     std::to_string(seen)};
}

std::string line(std::string_view label, std::uint64_t count)
{
    constexpr std::size_t column = 50;
    std::string text(label);
    text.resize(std::max(column, text.size() + 1), ' ');
    return text + std::to_string(count);
}

void appendCodes(std::vector<std::string> &lines, std::string_view heading,
                 std::span<const std::uint64_t> counts, std::span<const std::string_view> names)
{
    for (std::size_t code = 0; code < counts.size(); ++code)
        if (counts[code] > 0)
            lines.push_back(
                line(std::string(heading) + " " + std::to_string(code) + ", " + std::string(names[code]),
                     counts[code]));
}

} // namespace

std::uint64_t &EventTally::operator[](std::size_t number)
{
    if (number < ledgerEntryCount)
        return entries[number];
    number -= ledgerEntryCount;
    return number < apmErrorCodeCount ? refusalsByError[number]
                                      : refusalsByFailure.at(number - apmErrorCodeCount);
}

std::uint64_t EventTally::operator[](std::size_t number) const
{
    return const_cast<EventTally &>(*this)[number]; // which changes nothing by itself
}

std::string EventTally::key(std::size_t number)
{
    if (number < ledgerEntryCount)
        return std::string(entryRows[number].key);
    number -= ledgerEntryCount;
    return number < apmErrorCodeCount ? "error_" + std::to_string(number)
                                      : "failure_" + std::to_string(number - apmErrorCodeCount);
}

std::int64_t EventTally::underWay() const
{
    return static_cast<std::int64_t>(sumOf(*this, Side::EventIn) - sumOf(*this, Side::EventEnd));
}

std::int64_t EventTally::waitingRows() const
{
    return static_cast<std::int64_t>(sumOf(*this, Side::RowIn) + count(LedgerEntry::Stored) -
                                     sumOf(*this, Side::RowOut));
}

std::int64_t EventTally::bundledEvents() const
{
    return static_cast<std::int64_t>(sumOf(*this, Side::QueueIn) + count(LedgerEntry::Bundled) -
                                     sumOf(*this, Side::QueueOut));
}

Result<> EventTally::balance(const Seen &seen) const
{
    const auto refused =
        static_cast<std::int64_t>(count(LedgerEntry::Refused) + count(LedgerEntry::PartsRefused));
    const Result<> checks[] = {
        same("events under way", underWay(), seen.eventsUnderWay),
        same("rows that wait", waitingRows(), seen.waitingRows),
        same("events in bundles", bundledEvents(), seen.bundledEvents),
        same("refusals by error code", sum(refusalsByError), refused),
        same("refusals by failure code", sum(refusalsByFailure), refused),
    };
    const auto *const broken = std::ranges::find_if_not(checks, &Result<>::has_value);
    return broken == std::end(checks) ? Result<>() : *broken;
}

std::vector<std::string> EventTally::lines() const
{
    std::vector<std::string> lines;
    std::ranges::transform(entryRows, std::back_inserter(lines),
                           [this](const EntryRow &row) { return line(row.label, count(row.entry)); });
    appendCodes(lines, "  refused with error", refusalsByError, errorNames);
    appendCodes(lines, "  refused for failure", refusalsByFailure, failureNames);
    return lines;
}

} // namespace skyflare
