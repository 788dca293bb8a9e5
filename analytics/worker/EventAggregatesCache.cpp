#include "analytics/worker/EventAggregatesCache.h"

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
    auto &[aggregates, hasChanged] = place->second;
    if (isNew) {
        aggregates.name = event.name;
        publicNames_ += event.name.starts_with('_') ? 0 : 1;
    }
    ++aggregates.lifetimeCount;
    ++aggregates.currentBundleCount;
    aggregates.lastFireTimestamp = event.timestamp;
    if (!std::exchange(hasChanged, true))
        changed_.push_back(&place->second);
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
