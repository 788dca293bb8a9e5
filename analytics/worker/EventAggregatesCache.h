#pragma once

#include "analytics/store/APMDatabase.h"

#include <map>
#include <string>
#include <vector>

namespace skyflare {

/// The aggregates of the events' names, read when they are first asked for, and written together.
///
/// Threads: the engine's worker.
class EventAggregatesCache {
public:
    /// @param publicNames  how many public names there are
    explicit EventAggregatesCache(std::int64_t publicNames) : publicNames_(publicNames) {}

    /// Null: there was no event of that name. Holds until the next call.
    Result<const APMEventAggregates *> find(APMDatabase &database, std::string_view name);
    /// After find(), of the same name, without an error.
    void count(const APMEvent &event);
    [[nodiscard]] std::int64_t publicNames() const { return publicNames_; }

    /// What has changed since the last time.
    Result<> write(APMDatabase &database);

private:
    struct Entry {
        APMEventAggregates aggregates;
        bool hasChanged = false;
    };

    std::int64_t publicNames_;
    std::map<std::string, Entry, std::less<>> entries_;
    std::vector<Entry *> changed_;
};

} // namespace skyflare
