#pragma once

#include "analytics/pipeline/APMPersistedSuite.h"
#include "analytics/worker/EventJournal.h"

namespace skyflare {

/// Whether the event "_f" is due: once in the life of an installation, and once after each reset.
///
/// Threads: the engine's worker. Borrows suite and journal.
class FirstOpen {
public:
    static constexpr std::string_view eventName = "_f";

    FirstOpen(APMPersistedSuite &suite, EventJournal &journal) : suite_(suite), journal_(journal) {}

    /// To be asked before every event; whoever is told yes logs it, and is not told so again. As long as
    /// there is no database, no.
    [[nodiscard]] bool takeDue();
    /// After a reset. Persisted, so that a process that ends here leaves it to the next one.
    void makeDue();

private:
    APMPersistedSuite &suite_;
    EventJournal &journal_;
    bool isSettled_ = false;
};

} // namespace skyflare
