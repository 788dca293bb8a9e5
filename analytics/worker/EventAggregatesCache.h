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
    /// What went into a bundle.
    struct BundledEvents {
        std::int64_t count = 0;
        double newest = 0; ///< seconds since 1970
    };
    /// @param day  on which it did
    Result<> countBundled(APMDatabase &database, std::string_view name, const BundledEvents &bundled,
                          std::int64_t day);
    [[nodiscard]] std::int64_t publicNames() const { return publicNames_; }

    /// What has changed since the last time.
    Result<> write(APMDatabase &database);

private:
    struct Entry {
        APMEventAggregates aggregates;
        bool hasChanged = false;
    };

    void noteChange(Entry &entry);

    std::int64_t publicNames_;
    std::map<std::string, Entry, std::less<>> entries_;
    std::vector<Entry *> changed_;
};

} // namespace skyflare
