#include "analytics/store/BundleQueue.h"

#include "analytics/proto/BatchMessage.h"
#include "analytics/store/Gzip.h"
#include "analytics/store/StoreLog.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace skyflare {

namespace {

/// Of rows, as SQL has it.
constexpr std::int64_t noLimit = -1;

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

struct OpenedBundle {
    Bytes message;
    BundleMessage::Head head;
};

/// The check sum that gzip keeps has been looked at, so that what is in it is what was put in.
Result<OpenedBundle> open(std::span<const std::uint8_t> compressed)
{
    if (compressed.empty())
        return Error{"store", 6, "Cannot decompress an empty bundle data"};
    auto message = gunzip(compressed, largestBundle);
    if (!message)
        return message.error();
    auto head = BundleMessage::head(*message);
    if (!head)
        return Error{"store", 7, "Unable to parse bundle from decompressed data"};
    return OpenedBundle{*std::move(message), *std::move(head)};
}

std::span<const std::uint8_t> bytesOf(const Statement &row, int column)
{
    return row.bytes(column).value_or(std::span<const std::uint8_t>());
}

} // namespace

Result<> BundleQueue::insert(const FinishedBundle *bundle, IsRealtime isRealtime, double now,
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
    const auto data = gzip(bundle->message);
    if (!data)
        return storeLog::refusal(monitor, data.error().message);
    writeLog(monitor, storeLog::savingBundle, std::to_string(data->size()));
    forget();
    return store_.insert(
        {"insert bundle",
         "INSERT INTO queue (data, bundle_end_timestamp, is_realtime, retry_count) VALUES (?, ?, ?, 0)"},
        {*data, bundle->endTimestamp, std::int64_t{isRealtime == IsRealtime::Yes}});
}

/// @return nothing where it cannot be read, or is another app's
std::optional<QueuedBundle> BundleQueue::read(const Statement &row, std::string_view appId) const
{
    const std::int64_t rowID = row.integer(0).value_or(0);
    const auto data = bytesOf(row, 1);
    auto bundle = open(data);
    if (!bundle) {
        writeLog(store_.monitor(), storeLog::unreadableBundle,
                 std::to_string(rowID) + ", " + bundle.error().message);
        return {};
    }
    if (bundle->head.appId != appId)
        return {};
    QueuedBundle queued{{rowID, {}, bundle->head.events},
                        row.integer(2).value_or(0),
                        bundle->head.endTimestamp,
                        std::move(bundle->message)};
    std::ranges::copy(data.last(queued.mark.seal.size()), queued.mark.seal.begin());
    return queued;
}

/// Deliberate: the oldest bundle is given whatever its size is, or it would block the queue until it is
/// stale. Those that are passed over count for nothing.
Result<std::vector<QueuedBundle>> BundleQueue::oldest(const BundleQuery &query)
{
    std::vector<QueuedBundle> bundles;
    if (query.mostBundles <= 0)
        return bundles;
    std::size_t size = BatchMessage::mostBytesOfFacts;
    using Rows = APMSqliteStore::Rows;
    const auto asked = store_.forEachRow(
        {"query bundles", "SELECT rowid, data, retry_count FROM queue ORDER BY rowid ASC LIMIT ?"}, {noLimit},
        [&](const Statement &row) {
            auto queued = read(row, query.appId);
            if (!queued)
                return Rows::GoOn;
            size += BatchMessage::sizeOfBundle(queued->message.size());
            if (size > query.mostBytes && !bundles.empty())
                return Rows::Stop;
            bundles.push_back(*std::move(queued));
            const bool isFull = size >= query.mostBytes || std::ssize(bundles) == query.mostBundles;
            return isFull ? Rows::Stop : Rows::GoOn;
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

Result<std::uint64_t> BundleQueue::remove(std::span<const BundleMark> bundles)
{
    forget();
    std::uint64_t events = 0;
    for (const BundleMark &bundle : bundles) {
        const auto deleted =
            store_.execute({"delete bundle", "DELETE FROM queue WHERE rowid = ? AND substr(data, -8) = ?"},
                           {bundle.rowID, std::span<const std::uint8_t>(bundle.seal)});
        if (!deleted)
            return deleted.error();
        events += *deleted > 0 ? bundle.events : 0;
    }
    return events;
}

Result<std::uint64_t> BundleQueue::deleteStale(double now, double age)
{
    if (!(age >= 0))
        return storeLog::refusal(store_.monitor(), "Cannot delete stale bundles after negative time period");
    forget();
    const std::string where =
        "FROM queue WHERE abs(bundle_end_timestamp - cast(? as REAL)) > cast(? as REAL)";
    auto events = eventsIn("SELECT data " + where, {now, age});
    if (!events)
        return events;
    if (const auto deleted = store_.run({"delete stale bundles", "DELETE " + where}, {now, age}); !deleted)
        return deleted.error();
    return events;
}

Result<std::uint64_t> BundleQueue::eventCount()
{
    return eventsIn("SELECT data FROM queue");
}

Result<std::uint64_t> BundleQueue::eventsIn(std::string_view sql, const SqliteArguments &arguments)
{
    std::uint64_t events = 0;
    const auto asked =
        store_.forEachRow({"count bundled events", sql}, arguments, [&events](const Statement &row) {
            const auto bundle = open(bytesOf(row, 0));
            events += bundle ? bundle->head.events : 0;
        });
    if (!asked)
        return asked.error();
    return events;
}

Result<bool> BundleQueue::isEmpty()
{
    return isEmpty_.get([this] {
        return store_.isTrue({"look for bundles", "SELECT NOT EXISTS (SELECT 1 FROM queue LIMIT 1)"});
    });
}

Result<bool> BundleQueue::hasRealtime()
{
    return hasRealtime_.get([this] {
        return store_.isTrue({"look for realtime bundles",
                              "SELECT EXISTS (SELECT 1 FROM queue WHERE is_realtime = 1 LIMIT 1)"});
    });
}

Result<std::optional<double>> BundleQueue::newestEndTimestamp()
{
    return newestEnd_.get(
        [this] { return store_.numberForQuery("SELECT MAX(bundle_end_timestamp) FROM queue"); });
}

void BundleQueue::forget()
{
    isEmpty_.forget();
    hasRealtime_.forget();
    newestEnd_.forget();
}

} // namespace skyflare
