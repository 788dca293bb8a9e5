#pragma once

#include "analytics/proto/APMMeasurementBatch.h"

#include <cstddef>
#include <string>

namespace skyflare {

/// When and how a bundle came.
struct Arrival {
    APMBatchFacts batch;
    double receivedTimestamp = 0; ///< by the collector's clock; seconds since 1970
};

/// A bundle's events as JSON objects, one a line; docs/wire-format.md says what is in them.
///
/// Threads: any. Borrows the bundle.
class EventLines {
public:
    EventLines(const APMMeasurementBundle &bundle, const Arrival &arrival);

    /// Appends the line of one event, with its end. @param index  in the bundle, from 0 on
    void append(std::string &lines, std::size_t index) const;

    /// How long all lines are at most, beside what the events' own bytes come to: each repeats what is true
    /// of the bundle.
    [[nodiscard]] std::size_t repeatedBytes() const;

private:
    const APMMeasurementBundle &bundle_;
    const std::string shared_; ///< what stands in every line, up to the event's number
};

} // namespace skyflare
