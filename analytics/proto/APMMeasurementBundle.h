#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/proto/APMMetadata.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// Events that were recorded under the same metadata, finished for the upload.
///
/// Threads: any; a value.
struct APMMeasurementBundle {
    std::string appId;
    std::string databaseId;          ///< made anew with the database
    std::int64_t index = 0;          ///< of that database; the first is 1
    double startTimestamp = 0;       ///< of the oldest event, seconds since 1970
    double endTimestamp = 0;         ///< of the newest
    double previousEndTimestamp = 0; ///< of the bundle before; 0: there was none
    std::vector<APMEvent> events;
    APMMetadata metadata;

    bool operator==(const APMMeasurementBundle &) const = default;
};

} // namespace skyflare
