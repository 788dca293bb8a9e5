#pragma once

#include "analytics/proto/BundleMessage.h"
#include "analytics/store/APMSqliteStore.h"
#include "analytics/store/KnownAnswer.h"
#include "analytics/store/RawEventTable.h"

#include <array>

namespace skyflare {

/// A bundle that is to be put into the queue. Borrows what it is made from.
///
/// Threads: any; a value.
struct FinishedBundle {
    std::string_view appId;
    double startTimestamp = 0; ///< seconds since 1970
    double endTimestamp = 0;
    std::span<const std::uint8_t> message; ///< an APMPBMeasurementBundle
};

/// By what a queued bundle is known again: a row id may be given to another one when it is free.
///
/// Threads: any; a value.
struct BundleMark {
    std::int64_t rowID = 0;
    std::array<std::uint8_t, 8>
        seal{}; ///< the last bytes of its row's data: check sum and size of what is in it
    std::uint64_t events = 0;

    bool operator==(const BundleMark &) const = default;
};

/// A bundle that waits in the queue.
///
/// Threads: any; a value.
struct QueuedBundle {
    BundleMark mark;
    std::int64_t retryCount = 0; ///< uploads that failed
    double endTimestamp = 0;     ///< seconds since 1970
    Bytes message;               ///< an APMPBMeasurementBundle
};

/// What is asked of the queue for one batch.
struct BundleQuery {
    std::string_view appId; ///< bundles of others are passed over
    std::int64_t mostBundles = 0;
    std::size_t mostBytes = 0; ///< of the whole batch as it is sent
};

/// Finished bundles, oldest first. Knows without asking whether there are any, what the newest one's end is,
/// and whether one must go at once.
///
/// Threads: its store's, which must outlive it.
class BundleQueue {
public:
    explicit BundleQueue(APMSqliteStore &store) : store_(store) {}

    /// @param now  seconds since 1970; with `maxQueueTime` the span beyond which a bundle is reported, and
    /// stored
    Result<> insert(const FinishedBundle *bundle, IsRealtime isRealtime, double now, double maxQueueTime);
    /// As many as fit, the first one whatever its size is. One that cannot be read is logged and passed over.
    Result<std::vector<QueuedBundle>> oldest(const BundleQuery &query);
    Result<> incrementRetryCounters(std::span<const std::int64_t> rowIDs);
    /// Those that are still there.
    /// @return how many events were in them
    Result<std::uint64_t> remove(std::span<const BundleMark> bundles);
    /// @return how many events were in them; those that cannot be read count as empty
    Result<std::uint64_t> deleteStale(double now, double age);
    /// The same, of all that wait.
    Result<std::uint64_t> eventCount();

    Result<bool> isEmpty();
    Result<bool> hasRealtime();
    /// Nothing: there is no bundle.
    Result<std::optional<double>> newestEndTimestamp();
    /// What is known, after somebody else has changed it, or what was done has been undone.
    void forget();

private:
    APMSqliteStore &store_;
    KnownAnswer<bool> isEmpty_;
    KnownAnswer<bool> hasRealtime_;
    KnownAnswer<std::optional<double>> newestEnd_;

    std::optional<QueuedBundle> read(const Statement &row, std::string_view appId) const;
    /// @param sql  asks for the data of bundles
    Result<std::uint64_t> eventsIn(std::string_view sql, const SqliteArguments &arguments = {});
};

} // namespace skyflare
