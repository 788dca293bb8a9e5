#include "analytics/store/BundleQueue.h"

#include "analytics/proto/BundleMessage.h"
#include "analytics/store/Gzip.h"
#include "analytics/store/StoreLog.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

/// Far above the largest bundle; what claims to be larger is damaged.
constexpr std::size_t largestBundle = 256U << 20U;

bool isValidTimestamp(double timestamp)
{
    return std::isfinite(timestamp) && timestamp > 0;
}

/// Numbers alone, so they may stand in the text; there may be more of them than places for values.
std::string rowIDCondition(std::span<const std::int64_t> rowIDs)
{
    std::string list;
    for (const std::int64_t rowID : rowIDs)
        list.append(list.empty() ? "" : ",").append(std::to_string(rowID));
    return "rowid IN (" + list + ")";
}

Result<APMMeasurementBundle> decodeBundle(std::span<const std::uint8_t> compressed, std::size_t &size)
{
    if (compressed.empty())
        return Error{"store", 6, "Cannot decompress an empty bundle data"};
    const auto data = gunzip(compressed, largestBundle);
    if (!data)
        return data.error();
    size = data->size();
    auto bundle = BundleMessage::decode(*data);
    if (!bundle)
        return Error{"store", 7, "Unable to parse bundle from decompressed data"};
    return bundle;
}

} // namespace

Result<> BundleQueue::insert(const APMMeasurementBundle *bundle, IsRealtime isRealtime, double now,
                             double maxQueueTime)
{
    APMMonitor &monitor = store_.monitor();
    if (!bundle)
        return storeLog::refusal(monitor, "Failed to insert nil bundle");
    if (bundle->appId.empty())
        return storeLog::refusal(monitor, "Failed to insert bundle without App ID");
    if (!isValidTimestamp(bundle->endTimestamp))
        return storeLog::refusal(monitor, "Failed to insert bundle without valid timestamp");
    if (std::abs(now - bundle->startTimestamp) > maxQueueTime ||
        std::abs(now - bundle->endTimestamp) > maxQueueTime)
        writeLog(monitor, storeLog::bundleOutsideTimeSpan);
    const auto data = gzip(BundleMessage::encode(*bundle));
    if (!data)
        return storeLog::refusal(monitor, data.error().message);
    writeLog(monitor, storeLog::savingBundle, std::to_string(data->size()));
    return store_.insert(
        {"insert bundle",
         "INSERT INTO queue (data, bundle_end_timestamp, is_realtime, retry_count) VALUES (?, ?, ?, 0)"},
        {*data, bundle->endTimestamp, std::int64_t{isRealtime == IsRealtime::Yes}});
}

std::optional<QueuedBundle> BundleQueue::read(const Statement &row) const
{
    QueuedBundle queued{row.integer(0).value_or(0), row.integer(2).value_or(0), 0, {}};
    auto bundle = decodeBundle(row.bytes(1).value_or(std::span<const std::uint8_t>()), queued.size);
    if (!bundle) {
        writeLog(store_.monitor(), storeLog::unreadableBundle,
                 std::to_string(queued.rowID) + ", " + bundle.error().message);
        return {};
    }
    queued.bundle = *std::move(bundle);
    return queued;
}

/// Deliberate: the oldest bundle is given whatever its size is, or it would block the queue until it is
/// stale.
Result<std::vector<QueuedBundle>> BundleQueue::oldest(std::int64_t countLimit, std::size_t sizeLimit)
{
    std::vector<QueuedBundle> bundles;
    std::size_t size = 0;
    bool isFull = false;
    const auto asked = store_.forEachRow(
        {"query bundles", "SELECT rowid, data, retry_count FROM queue ORDER BY rowid ASC LIMIT ?"},
        {std::max(countLimit, std::int64_t{0})}, [&](const Statement &row) {
            if (isFull)
                return;
            auto queued = read(row);
            if (!queued)
                return;
            size += queued->size;
            isFull = size > sizeLimit && !bundles.empty();
            if (!isFull)
                bundles.push_back(*std::move(queued));
        });
    if (!asked)
        return asked.error();
    return bundles;
}

Result<std::vector<QueuedBundle>> BundleQueue::withRowIDs(std::span<const std::int64_t> rowIDs)
{
    std::vector<QueuedBundle> bundles;
    const std::string sql = "SELECT rowid, data, retry_count FROM queue WHERE " + rowIDCondition(rowIDs);
    const auto asked = store_.forEachRow({"query bundles", sql}, {}, [&](const Statement &row) {
        if (auto queued = read(row))
            bundles.push_back(*std::move(queued));
    });
    if (!asked)
        return asked.error();
    return bundles;
}

Result<> BundleQueue::incrementRetryCounters(std::span<const std::int64_t> rowIDs)
{
    const std::string condition = rowIDCondition(rowIDs);
    return store_.together([&]() -> Result<> {
        // Rows of a version that did not count them have NULL, to which nothing can be added.
        const auto counted =
            store_.run({"increment retry counter",
                        "UPDATE queue SET retry_count = 0 WHERE retry_count IS NULL AND " + condition});
        if (!counted)
            return counted.error();
        return store_.increaseColumn({"retry_count", 1, "queue", condition, {}});
    });
}

Result<> BundleQueue::deleteWithRowIDs(std::span<const std::int64_t> rowIDs)
{
    return store_.deleteRecordsFromTableWithName("queue", rowIDCondition(rowIDs));
}

Result<std::int64_t> BundleQueue::deleteStale(double now, double age)
{
    if (!(age >= 0))
        return storeLog::refusal(store_.monitor(), "Cannot delete stale bundles after negative time period");
    return store_.execute(
        {"delete stale bundles",
         "DELETE FROM queue WHERE abs(bundle_end_timestamp - cast(? as REAL)) > cast(? as REAL)"},
        {now, age});
}

} // namespace skyflare
