#pragma once

#include "analytics/proto/APMMeasurementBundle.h"
#include "analytics/store/APMSqliteStore.h"
#include "analytics/store/RawEventTable.h"

namespace skyflare {

/// A bundle that waits in the queue.
struct QueuedBundle {
    std::int64_t rowID = 0;
    std::int64_t retryCount = 0; ///< uploads that failed
    std::size_t size = 0;        ///< bytes of its message, not compressed
    APMMeasurementBundle bundle;
};

/// Finished bundles, oldest first.
///
/// Threads: its store's, which must outlive it.
class BundleQueue {
public:
    explicit BundleQueue(APMSqliteStore &store) : store_(store) {}

    /// @param now  seconds since 1970; with `maxQueueTime` the span beyond which a bundle is reported, and
    /// stored
    Result<> insert(const APMMeasurementBundle *bundle, IsRealtime isRealtime, double now,
                    double maxQueueTime);
    /// One that cannot be read is logged and left out.
    Result<std::vector<QueuedBundle>> oldest(std::int64_t countLimit, std::size_t sizeLimit);
    Result<std::vector<QueuedBundle>> withRowIDs(std::span<const std::int64_t> rowIDs);
    Result<> incrementRetryCounters(std::span<const std::int64_t> rowIDs);
    Result<> deleteWithRowIDs(std::span<const std::int64_t> rowIDs);
    /// @return how many
    Result<std::int64_t> deleteStale(double now, double age);

private:
    APMSqliteStore &store_;

    std::optional<QueuedBundle> read(const Statement &row) const;
};

} // namespace skyflare
