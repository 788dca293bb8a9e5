#pragma once

#include "analytics/proto/APMMeasurementBundle.h"

#include <string>
#include <vector>

namespace skyflare {

/// What is true of one request to the collecting server as a whole.
///
/// Threads: any; a value.
struct APMBatchFacts {
    double uploadTimestamp = 0; ///< when it was sent, by the sender's clock; seconds since 1970
    std::string engineVersion;
    bool isDebug = false;

    bool operator==(const APMBatchFacts &) const = default;
};

/// One request as whoever collects it gets it.
///
/// Threads: any; a value.
struct APMMeasurementBatch {
    APMBatchFacts facts;
    std::vector<APMMeasurementBundle> bundles; ///< oldest first

    bool operator==(const APMMeasurementBatch &) const = default;
};

} // namespace skyflare
