#pragma once

#include "analytics/worker/BundleDraft.h"
#include "analytics/worker/EventJournal.h"
#include "platform/base/RandomSource.h"

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

/// Bundles for one request, oldest first.
///
/// Threads: any; a value.
struct BundleBatch {
    std::vector<Bytes> messages;   ///< each an APMPBMeasurementBundle
    std::vector<BundleMark> marks; ///< by what they are found again
    double newestEvent = 0;        ///< seconds since 1970

    [[nodiscard]] bool isEmpty() const { return marks.empty(); }
};

/// What uploading reads and writes in the database: raw events become bundles, bundles go. Each change is a
/// transaction of its own, which ends what the journal has open; the ledger counts along.
///
/// Threads: the engine's worker. Borrows its Services.
class UploadStore {
public:
    struct Services {
        EventJournal &journal;
        DatabaseKeeper &databases;
        APMMonitor &monitor;
        const Clock &clock;
        RandomSource &random; ///< for the database's id
    };

    explicit UploadStore(const Services &services) : services_(services) {}

    /// Cheap: as a rule nothing has to be asked. The error: there is no database now.
    Result<WaitingData> waiting();

    // bundleRawEvents
    /// Makes one bundle of the oldest events that share their metadata.
    /// @param appID  that it carries; an empty one is refused, and its events stay
    /// @return how many events it took, with those that could not be read, which are lost; 0: none waits
    Result<std::int64_t> bundleOldest(const std::string &appID, const BundleLimits &limits);

    /// As many as fit, the first one even if it alone does not. Those of another app are left out. Has
    /// them on the disk first, or a power failure might take back a bundle that somebody has received, and
    /// its index be given to another.
    Result<BundleBatch> nextBatch(const std::string &appID, std::int64_t mostBundles, std::size_t mostBytes);

    // removeBundlesFromDatabaseWithIDs:
    /// Those that are still there, whatever has become of the database meanwhile.
    Result<> didUpload(const BundleBatch &batch);
    // incrementRetryCounter
    Result<> didFail(const BundleBatch &batch);

    /// The settings as the server gave them last; nothing: it never did.
    Result<std::optional<APMRemoteConfigRecord>> settings();
    Result<> keepSettings(const APMRemoteConfigRecord &record);

private:
    using Changing = EventJournal::Changing;

    Services services_;
    bool isOnDisk_ = false; ///< every bundle that was made

    Result<std::int64_t> bundle(const Changing &changing, const std::string &appID,
                                const BundleLimits &limits);
    Result<APMMeasurementBundle> frame(APMDatabase &database, const std::string &appID,
                                       std::int64_t fingerprint);
    Result<std::string> databaseIdentity(APMDatabase &database);
    Result<BundleDraft> draft(APMDatabase &database, APMMeasurementBundle frame, std::int64_t fingerprint,
                              const BundleLimits &limits);
    static Result<> store(const Changing &changing, const BundleDraft &draft);
    static Result<> removeRows(const Changing &changing, const BundleDraft &draft, std::int64_t fingerprint);
    /// Tells the keeper of an error.
    template <typename T> Result<T> noting(Result<T> done);
    template <typename T> Result<T> read(Result<T> (APMDatabase::*question)());
};

} // namespace skyflare
