#pragma once

#include "analytics/pipeline/EventTally.h"
#include "analytics/store/APMDatabase.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// What the measurement database holds.
///
/// Threads: any; a value.
struct MeasurementStatus {
    std::uintmax_t fileBytes = 0; ///< with its log
    std::string integrity;        ///< "ok", or what is wrong
    EventTally ledger;            ///< since the database was made
    std::int64_t waitingEvents = 0;
    std::optional<double> oldestEvent; ///< seconds since 1970
    std::optional<double> newestEvent;
    std::int64_t waitingBundles = 0;
    std::int64_t bundledEvents = 0; ///< in them
    APMDailyCounts dailyCounts;
    std::vector<APMUserAttribute> userAttributes; ///< internal ones too, by name
};

/// Reads a measurement database without owning it: beside a program that may be writing to it at the same
/// moment, and without changing anything.
///
/// Threads: one at a time. Borrows the monitor.
class MeasurementReader {
public:
    /// The code of the error where there is no database, or another program is just making it.
    static constexpr int noDatabaseYet = -1;

    static Result<std::unique_ptr<MeasurementReader>> open(const std::filesystem::path &databaseName,
                                                           APMMonitor &monitor);

    /// All of it at one moment.
    Result<MeasurementStatus> status();
    /// Oldest first. One that cannot be read is logged and left out.
    Result<> forEachWaitingEvent(const std::function<void(const RawEvent &)> &event);

    /// For open().
    MeasurementReader(std::filesystem::path file, std::unique_ptr<APMSqliteStore> store)
        : file_(std::move(file)), store_(std::move(store))
    {
    }

private:
    std::filesystem::path file_;
    std::unique_ptr<APMSqliteStore> store_;

    Result<> readCounts(MeasurementStatus &status);
};

} // namespace skyflare
