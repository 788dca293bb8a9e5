#pragma once

#include <cstdint>

namespace skyflare {

/// How much the measurement store keeps, and for how long. Whoever makes one keeps to the bounds.
///
/// Threads: any; a value.
struct StoreLimits {
    std::int64_t maxStoredEvents = 100'000;    ///< raw events; 0 to 1,000,000
    double staleDataDeletionInterval = 86'400; ///< seconds; 3,600 to 604,800
    double maxQueueTime = 2'419'200;           ///< seconds, 28 days; 604,800 to 7,862,400

    bool operator==(const StoreLimits &) const = default;
};

} // namespace skyflare
