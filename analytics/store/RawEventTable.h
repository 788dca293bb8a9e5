#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/proto/APMMetadata.h"
#include "analytics/store/APMSqliteStore.h"
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

/// Raw events of one metadata, oldest first.
struct RawEvents {
    std::vector<RawEvent> events;
    /// Of the last row that was looked at, which may hold an event that cannot be read; 0: there was no row.
    std::int64_t maxRowID = 0;
};

/// Events that wait to be bundled, and their metadata. Keeps count of them.
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
    Result<RawEvents> events(std::int64_t metadataFingerprint, std::int64_t most,
                             const std::function<bool(const APMEvent &)> &eventFilter);
    /// Of every metadata, oldest first. One that cannot be read is logged and left out.
    Result<> forEach(const std::function<void(const RawEvent &)> &event);
    /// @return how many
    Result<std::int64_t> deleteUpTo(std::int64_t maxRowID, std::int64_t metadataFingerprint);
    Result<> deleteUnusedMetadata();
    /// @return how many
    Result<std::int64_t> deleteStale(double now, double age);
    /// @return how many
    Result<std::int64_t> deleteAll();
    Result<std::int64_t> count();
    /// After what was done has been undone.
    void forgetCount() { count_.reset(); }

private:
    APMSqliteStore &store_;
    std::optional<std::int64_t> count_; ///< nothing: the table has to be asked

    Result<std::int64_t> deleteCounted(const APMSqliteStore::Operation &operation,
                                       const SqliteArguments &arguments);
    Result<> insertRow(const APMEvent &event, std::int64_t metadataFingerprint, IsRealtime isRealtime);
    [[nodiscard]] std::optional<RawEvent> read(std::int64_t rowID, std::span<const std::uint8_t> data,
                                               bool isRealtime) const;
};

} // namespace skyflare
