#include "analytics/worker/UploadStore.h"

#include "analytics/store/StoreLog.h"
#include "analytics/worker/MeasurementLog.h"
#include "platform/base/RandomIdentifier.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace skyflare {

namespace {

/// Of a transaction's time, for taking events together; compressing, deleting and committing take the rest.
constexpr double mostSecondsOfTaking = 0.025;
constexpr std::int64_t eventsBetweenLooks = 1'000;

Error noDatabase()
{
    return Error{"uploads", 1, "There is no measurement database"};
}

} // namespace

template <typename T> Result<T> UploadStore::noting(Result<T> done)
{
    if (!done)
        services_.databases.didFail(done.error());
    return done;
}

template <typename T> Result<T> UploadStore::read(Result<T> (APMDatabase::*question)())
{
    APMDatabase *const database = services_.databases.database();
    return database ? noting((database->*question)()) : noDatabase();
}

Result<WaitingData> UploadStore::waiting()
{
    const auto newestEvent = read(&APMDatabase::latestRawEventTimestamp);
    if (!newestEvent)
        return newestEvent.error();
    const auto newestBundle = read(&APMDatabase::latestBundleEndTimestamp);
    if (!newestBundle)
        return newestBundle.error();
    const auto hasRealtimeEvents = read(&APMDatabase::hasRealtimeRawEvents);
    if (!hasRealtimeEvents)
        return hasRealtimeEvents.error();
    const auto hasRealtimeBundles = read(&APMDatabase::hasRealtimeBundles);
    if (!hasRealtimeBundles)
        return hasRealtimeBundles.error();
    return WaitingData{newestEvent->value_or(0), newestBundle->value_or(0),
                       *hasRealtimeEvents || *hasRealtimeBundles,
                       !newestEvent->has_value() && !newestBundle->has_value()};
}

Result<std::int64_t> UploadStore::bundleOldest(const std::string &appID, const BundleLimits &limits)
{
    const auto isEmpty = read(&APMDatabase::isRawEventsEmpty);
    if (!isEmpty)
        return isEmpty.error();
    if (*isEmpty)
        return std::int64_t{0};
    if (appID.empty())
        return storeLog::refusal(services_.monitor, "Failed to insert bundle without App ID");
    std::int64_t taken = 0;
    const auto changed = services_.journal.change([&](const Changing &changing) -> Result<> {
        const auto bundled = bundle(changing, appID, limits);
        if (!bundled)
            return bundled.error();
        taken = *bundled;
        return {};
    });
    if (!changed)
        return changed.error();
    isOnDisk_ = false;
    return taken;
}

Result<std::int64_t> UploadStore::bundle(const Changing &changing, const std::string &appID,
                                         const BundleLimits &limits)
{
    const auto fingerprint = changing.database.nextMetadataFingerprintToProcess();
    if (!fingerprint)
        return fingerprint.error();
    if (!*fingerprint)
        return std::int64_t{0};
    auto framed = frame(changing.database, appID, **fingerprint);
    if (!framed)
        return framed.error();
    const auto drafted = draft(changing.database, *std::move(framed), **fingerprint, limits);
    if (!drafted)
        return drafted.error();
    if (drafted->events() > 0) {
        if (const auto stored = store(changing, *drafted); !stored)
            return stored.error();
    }
    if (const auto removed = removeRows(changing, *drafted, **fingerprint); !removed)
        return removed.error();
    return drafted->events() + drafted->unreadable();
}

/// Where the metadata cannot be read, its events go without it: they would be in the way of all others.
Result<APMMeasurementBundle> UploadStore::frame(APMDatabase &database, const std::string &appID,
                                                std::int64_t fingerprint)
{
    const auto last = database.queryAppMetadata();
    if (!last)
        return last.error();
    auto identity = databaseIdentity(database);
    if (!identity)
        return identity.error();
    APMMeasurementBundle bundle;
    bundle.appId = appID;
    bundle.databaseId = *std::move(identity);
    bundle.index = last->lastBundleIndex + 1;
    bundle.previousEndTimestamp = last->lastBundleEndTimestamp;
    auto metadata = database.rawEventMetadataWithFingerprint(fingerprint);
    if (metadata && *metadata)
        bundle.metadata = **std::move(metadata);
    else if (!metadata && metadata.error().domain == "SQLite")
        return metadata.error();
    else
        writeLog(services_.monitor, storeLog::unreadableMetadata,
                 std::to_string(fingerprint) + ", " +
                     (metadata ? "it is not there" : metadata.error().message));
    bundle.metadata.app.appId = appID;
    return bundle;
}

Result<std::string> UploadStore::databaseIdentity(APMDatabase &database)
{
    const auto kept = database.databaseIdentity();
    if (!kept)
        return kept.error();
    if (*kept && isRandomIdentifier(**kept))
        return **kept;
    auto made = makeRandomIdentifier(services_.random);
    if (!made) {
        writeLog(services_.monitor, measurementLog::noDatabaseID, made.error().description());
        return made;
    }
    if (const auto set = database.setDatabaseIdentity(*made); !set)
        return set.error();
    return made;
}

Result<BundleDraft> UploadStore::draft(APMDatabase &database, APMMeasurementBundle frame,
                                       std::int64_t fingerprint, const BundleLimits &limits)
{
    BundleDraft draft(std::move(frame), limits, services_.monitor);
    const double begun = services_.clock.secondsOfUptime();
    std::int64_t looked = 0;
    const auto asked =
        database.rawEventsWithMetadataFingerprint(fingerprint, limits.events, [&](const RawEventRow &row) {
            const auto rows = draft.take(row);
            const bool isLate = ++looked % eventsBetweenLooks == 0 &&
                                services_.clock.secondsOfUptime() - begun > mostSecondsOfTaking;
            return isLate ? BundleDraft::Rows::Stop : rows;
        });
    if (!asked)
        return asked.error();
    return draft;
}

Result<> UploadStore::store(const Changing &changing, const BundleDraft &draft)
{
    const APMMeasurementBundle &frame = draft.frame();
    const Bytes message = draft.message();
    const FinishedBundle finished{frame.appId, frame.startTimestamp, frame.endTimestamp, message};
    if (const auto inserted = changing.database.insertBundle(&finished, draft.isRealtime()); !inserted)
        return inserted.error();
    auto last = changing.database.queryAppMetadata();
    if (!last)
        return last.error();
    last->lastBundleIndex = frame.index;
    last->lastBundleStartTimestamp = frame.startTimestamp;
    last->lastBundleEndTimestamp = frame.endTimestamp;
    if (const auto updated = changing.database.updateAppMetadata(*last); !updated)
        return updated.error();
    for (const auto &[name, bundled] : draft.names()) {
        const auto counted = changing.events.countBundled(changing.database, name, bundled, changing.day);
        if (!counted)
            return counted.error();
    }
    changing.counted.add(LedgerEntry::Bundled, static_cast<std::uint64_t>(draft.events()));
    return {};
}

Result<> UploadStore::removeRows(const Changing &changing, const BundleDraft &draft, std::int64_t fingerprint)
{
    APMDatabase &database = changing.database;
    const auto removed =
        database.deleteRawEventsWithMaxRowID(draft.maxRowID(), fingerprint, draft.newestRow());
    if (!removed)
        return removed.error();
    if (*removed != draft.events() + draft.unreadable()) // an event would be in two bundles, or in none
        return Error{"uploads", 2, "Raw events do not go with their bundle"};
    changing.counted.add(LedgerEntry::Lost, static_cast<std::uint64_t>(draft.unreadable()));
    return database.deleteRawEventMetadataIfUnused(fingerprint);
}

Result<BundleBatch> UploadStore::nextBatch(const std::string &appID, std::int64_t mostBundles,
                                           std::size_t mostBytes)
{
    APMDatabase *const database = services_.databases.database();
    if (!database)
        return noDatabase();
    auto queued = noting(database->queryBundlesWithCountLimit({appID, mostBundles, mostBytes}));
    if (!queued)
        return queued.error();
    if (!queued->empty() && !isOnDisk_)
        isOnDisk_ = noting(database->writeThrough()).has_value();
    BundleBatch batch;
    for (QueuedBundle &each : *queued) {
        batch.messages.push_back(std::move(each.message));
        batch.marks.push_back(each.mark);
        batch.newestEvent = std::max(batch.newestEvent, each.endTimestamp);
    }
    return batch;
}

Result<> UploadStore::didUpload(const BundleBatch &batch)
{
    return services_.journal.change([&](const Changing &changing) -> Result<> {
        const auto removed = changing.database.deleteBundlesWithRowIDs(batch.marks);
        if (!removed)
            return removed.error();
        changing.counted.add(LedgerEntry::Uploaded, *removed);
        return {};
    });
}

Result<> UploadStore::didFail(const BundleBatch &batch)
{
    std::vector<std::int64_t> rowIDs;
    std::ranges::transform(batch.marks, std::back_inserter(rowIDs), &BundleMark::rowID);
    return services_.journal.change([&](const Changing &changing) {
        return changing.database.incrementRetryCounterForBundlesWithIDs(rowIDs);
    });
}

Result<std::optional<APMRemoteConfigRecord>> UploadStore::settings()
{
    return read(&APMDatabase::remoteConfig);
}

Result<> UploadStore::keepSettings(const APMRemoteConfigRecord &record)
{
    return services_.journal.change(
        [&](const Changing &changing) { return changing.database.updateRemoteConfig(record); });
}

} // namespace skyflare
