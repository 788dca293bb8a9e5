#pragma once

#include "analytics/proto/APMMeasurementBundle.h"
#include "analytics/store/APMDatabase.h"
#include "analytics/worker/EventAggregatesCache.h"

#include <map>
#include <string>

namespace skyflare {

/// How large a bundle may get.
///
/// Threads: any; a value.
struct BundleLimits {
    std::int64_t events = 1'000;
    std::size_t batchBytes = 65'536; ///< one that does not fit into a batch is split; one event goes alone
};

/// A bundle in the making: takes raw events as their rows hold them, oldest first, as long as they fit.
///
/// An event's bytes go into the bundle as they are, after a look at each of their fields; nothing is decoded.
///
/// Threads: one. Borrows the monitor.
class BundleDraft {
public:
    using Rows = RawEventTable::Rows;

    /// @param frame  the bundle without events and their times
    BundleDraft(APMMeasurementBundle frame, const BundleLimits &limits, APMMonitor &monitor);

    /// Stop: it is full; the row may be in it or not. One that cannot be read is logged, and is to go as
    /// well.
    Rows take(const RawEventRow &row);

    [[nodiscard]] std::int64_t events() const { return events_; }
    [[nodiscard]] std::int64_t unreadable() const { return unreadable_; }
    /// The last row that has been looked at to the end: it and those before it are to go. 0: none has.
    [[nodiscard]] std::int64_t maxRowID() const { return maxRowID_; }
    /// Of all rows that are to go; seconds since 1970.
    [[nodiscard]] double newestRow() const { return newestRow_; }
    [[nodiscard]] IsRealtime isRealtime() const { return isRealtime_; }
    using Names = std::map<std::string, EventAggregatesCache::BundledEvents, std::less<>>;
    [[nodiscard]] const Names &names() const { return names_; }
    [[nodiscard]] const APMMeasurementBundle &frame() const { return frame_; }
    /// An APMPBMeasurementBundle.
    [[nodiscard]] Bytes message() const;

private:
    APMMeasurementBundle frame_;
    BundleLimits limits_;
    APMMonitor &monitor_;
    std::size_t frameBytes_;
    Bytes encoded_; ///< the events
    std::int64_t events_ = 0;
    std::int64_t unreadable_ = 0;
    std::int64_t maxRowID_ = 0;
    double newestRow_;
    IsRealtime isRealtime_ = IsRealtime::No;
    Names names_;

    [[nodiscard]] bool fits(std::size_t eventBytes) const;
    void add(const RawEventRow &row);
};

} // namespace skyflare
