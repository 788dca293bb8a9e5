#include "analytics/worker/EventAggregatesCache.h"

#include <algorithm>
#include <utility>

namespace skyflare {

Result<const APMEventAggregates *> EventAggregatesCache::find(APMDatabase &database, std::string_view name)
{
    if (const auto known = entries_.find(name); known != entries_.end())
        return &std::as_const(known->second.aggregates);
    auto stored = database.eventAggregatesWithName(name);
    if (!stored)
        return stored.error();
    if (!*stored) // Deliberate: not kept. There is no end to the names that are asked for in vain.
        return static_cast<const APMEventAggregates *>(nullptr);
    Entry &entry = entries_[std::string(name)];
    entry.aggregates = **std::move(stored);
    return &std::as_const(entry.aggregates);
}

void EventAggregatesCache::count(const APMEvent &event)
{
    const auto [place, isNew] = entries_.try_emplace(event.name);
    APMEventAggregates &aggregates = place->second.aggregates;
    if (isNew) {
        aggregates.name = event.name;
        publicNames_ += event.name.starts_with('_') ? 0 : 1;
    }
    ++aggregates.lifetimeCount;
    ++aggregates.currentBundleCount;
    aggregates.lastFireTimestamp = event.timestamp;
    noteChange(place->second);
}

void EventAggregatesCache::noteChange(Entry &entry)
{
    if (!std::exchange(entry.hasChanged, true))
        changed_.push_back(&entry);
}

/// Of events that were trimmed nobody tells their name, so that more may seem to be left than there are.
Result<> EventAggregatesCache::countBundled(APMDatabase &database, std::string_view name,
                                            const BundledEvents &bundled, std::int64_t day)
{
    const auto found = find(database, name);
    if (!found)
        return found.error();
    if (!*found) // its events came without them
        return {};
    Entry &entry = entries_.find(name)->second;
    APMEventAggregates &aggregates = entry.aggregates;
    aggregates.currentBundleCount = std::max<std::int64_t>(aggregates.currentBundleCount - bundled.count, 0);
    aggregates.lastBundledTimestamp = bundled.newest;
    aggregates.lastBundledDay = day;
    noteChange(entry);
    return {};
}

Result<> EventAggregatesCache::write(APMDatabase &database)
{
    while (!changed_.empty()) {
        if (const auto updated = database.updateEventAggregates(changed_.back()->aggregates); !updated)
            return updated.error();
        changed_.back()->hasChanged = false;
        changed_.pop_back();
    }
    return {};
}

} // namespace skyflare
