#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/proto/APMMetadata.h"
#include "analytics/store/APMSqliteStore.h"
#include "analytics/store/KnownAnswer.h"
#include "analytics/store/StoreLimits.h"

namespace skyflare {

enum class IsRealtime { No, Yes };

/// Metadata as it is stored, made once for all the events that share it.
///
/// Threads: any; a value.
struct RawEventMetadata {
    std::int64_t fingerprint = 0;
    Bytes data;

    static RawEventMetadata of(const APMMetadata &metadata);
};

struct RawEvent {
    std::int64_t rowID = 0;
    APMEvent event;
    IsRealtime isRealtime = IsRealtime::No;
};

/// A raw event as its row holds it; whether its data can be read is not known. Borrows it from the row.
struct RawEventRow {
    std::int64_t rowID = 0;
    std::string name;
    double timestamp = 0; ///< seconds since 1970
    std::span<const std::uint8_t> data;
    IsRealtime isRealtime = IsRealtime::No;
};

/// Events that wait to be bundled, and their metadata. Knows without asking how many there are, when the
/// newest happened, and whether one must go at once.
///
/// Threads: its store's, which must outlive it.
class RawEventTable {
public:
    explicit RawEventTable(APMSqliteStore &store) : store_(store) {}

    Result<> insertMetadataIfNotExists(const RawEventMetadata &metadata);
    Result<std::optional<APMMetadata>> metadata(std::int64_t fingerprint);

    /// Makes room for one event, which is to be one of the newest maxStoredEvents.
    /// @return how many had to go
    Result<std::int64_t> trim(std::int64_t maxStoredEvents);
    /// Trims first.
    Result<> insert(const APMEvent &event, std::int64_t metadataFingerprint, IsRealtime isRealtime,
                    std::int64_t maxStoredEvents);

    using Rows = APMSqliteStore::Rows;
    using EventFilter = std::function<Rows(const RawEventRow &)>;
    /// Of one metadata, oldest first, until the filter says that it is enough.
    Result<> events(std::int64_t metadataFingerprint, std::int64_t most, const EventFilter &eventFilter);
    /// Of every metadata, oldest first. One that cannot be read is logged and left out.
    Result<> forEach(const std::function<void(const RawEvent &)> &event);

    /// @param newest  the time of the newest of those that go
    /// @return how many
    Result<std::int64_t> deleteUpTo(std::int64_t maxRowID, std::int64_t metadataFingerprint, double newest);
    Result<> deleteUnusedMetadata();
    Result<> deleteMetadataIfUnused(std::int64_t fingerprint);
    /// @return how many
    Result<std::int64_t> deleteStale(double now, double age);
    /// @return how many
    Result<std::int64_t> deleteAll();

    Result<std::int64_t> count();
    Result<bool> isEmpty();
    Result<bool> hasRealtime();
    /// Nothing: there is no event.
    Result<std::optional<double>> newestTimestamp();
    /// What is known, after what was done has been undone.
    void forget();

private:
    APMSqliteStore &store_;
    KnownAnswer<std::int64_t> count_;
    KnownAnswer<std::optional<double>> newest_;
    KnownAnswer<bool> hasRealtime_;

    Result<std::int64_t> deleteCounted(const APMSqliteStore::Operation &operation,
                                       const SqliteArguments &arguments);
    void didDelete(std::int64_t rows, double newest);
    Result<> insertRow(const APMEvent &event, std::int64_t metadataFingerprint, IsRealtime isRealtime);
    [[nodiscard]] std::optional<RawEvent> read(std::int64_t rowID, std::span<const std::uint8_t> data,
                                               bool isRealtime) const;
};

} // namespace skyflare
