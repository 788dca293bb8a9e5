#pragma once

#include "analytics/worker/EventJournal.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// What waits in the database.
///
/// Threads: any; a value.
struct WaitingData {
    double newestEvent = 0;  ///< raw; seconds since 1970; 0: there is none
    double newestBundle = 0; ///< the end of the newest one that is queued; 0: there is none
    bool hasRealtime = false;
    bool isEmpty = true; ///< no raw event, no bundle

    bool operator==(const WaitingData &) const = default;
};

/// How large a bundle may get.
///
/// Threads: any; a value.
struct BundleLimits {
    std::int64_t events = 1'000;
    std::size_t batchBytes = 65'536; ///< one that does not fit into a batch is split; one event goes alone
};

/// Bundles for one request, oldest first.
///
/// Threads: any; a value.
struct BundleBatch {
    std::vector<std::int64_t> rowIDs;
    std::vector<Bytes> messages;   ///< each an APMPBMeasurementBundle
    double newestEvent = 0;        ///< seconds since 1970
    std::uint64_t eventsCount = 0; ///< in all of them

    [[nodiscard]] bool isEmpty() const { return rowIDs.empty(); }
};

/// What uploading reads and writes in the database: raw events become bundles, bundles go. Each call is a
/// transaction of its own or part of the one that is open; the ledger counts along.
///
/// Threads: the engine's worker. Borrows its Services.
class UploadStore {
public:
    struct Services {
        EventJournal &journal;
        DatabaseKeeper &databases;
        APMMonitor &monitor;
        const Clock &clock;
        EventLedger &ledger;
        RandomSource &random; ///< for the database's id
    };

    explicit UploadStore(const Services &services) : services_(services) {}

    /// The error: there is no database now.
    Result<WaitingData> waiting();

    // bundleRawEvents
    /// Makes one bundle of the oldest events that share their metadata.
    /// @param appID  that it carries; an empty one is refused, and its events stay
    /// @return how many events it took; 0: none waits
    Result<std::int64_t> bundleOldest(const std::string &appID, const BundleLimits &limits);

    /// As many as fit, the first one even if it alone does not. Those of another app are left out.
    Result<BundleBatch> nextBatch(const std::string &appID, std::int64_t mostBundles, std::size_t mostBytes);

    // removeBundlesFromDatabaseWithIDs:
    Result<> didUpload(const BundleBatch &batch);
    // incrementRetryCounter
    Result<> didFail(const BundleBatch &batch);

    /// The settings as the server gave them last; nothing: it never did.
    Result<std::optional<APMRemoteConfigRecord>> settings();
    Result<> keepSettings(const APMRemoteConfigRecord &record);

private:
    Services services_;
};

} // namespace skyflare
