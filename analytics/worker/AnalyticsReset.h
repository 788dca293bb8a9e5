#pragma once

#include "analytics/pipeline/APMPersistedSuite.h"
#include "analytics/worker/EventJournal.h"

namespace skyflare {

/// Wipes what the engine has stored, and goes on trying: what could not be wiped, or was not when the process
/// ended, is wiped at the next start. How often that has failed stands in the suite.
///
/// Threads: the engine's worker. Borrows its Services.
class AnalyticsReset {
public:
    struct Services {
        APMPersistedSuite &suite;
        EventJournal &journal;
        APMMonitor &monitor;
    };

    explicit AnalyticsReset(const Services &services) : services_(services) {}

    /// Notes that there is something to wipe, for a later process to do.
    void makePending();
    void wipe();
    /// At the start. @return whether there was something to wipe
    [[nodiscard]] bool wipeIfPending();

private:
    Services services_;

    [[nodiscard]] std::int64_t tries() const;
};

} // namespace skyflare
