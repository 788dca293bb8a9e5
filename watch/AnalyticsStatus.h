#pragma once

#include "analytics/MeasurementReader.h"
#include "analytics/pipeline/APMAnalyticsOptions.h"
#include "analytics/pipeline/LaunchArguments.h"

#include <filesystem>
#include <optional>
#include <string>

namespace skyflare {

/// What --analytics-status prints.
///
/// Threads: any; a value.
struct AnalyticsStatus {
    std::filesystem::path databasePath = {};
    std::optional<MeasurementStatus> database = {}; ///< nothing: there is none yet
    APMAnalyticsOptions options = {};
    std::optional<bool> collectionChoice = {}; ///< as it was switched last
    std::optional<std::string> appInstanceID = {};
    MonitorModes modes = {};
    std::int64_t today = 0; ///< the number of the day, as the daily counts have it

    [[nodiscard]] bool isSound() const { return !database || database->integrity == "ok"; }
    /// Whether the rows that are there are those that the ledger has counted, and its counts agree.
    [[nodiscard]] Result<> balance() const;
    [[nodiscard]] bool isCollectionOn() const { return isCollectionEnabled(options, collectionChoice); }
    /// "FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED is set in Info.plist"
    [[nodiscard]] std::string whyCollection() const;
    /// Where events are sent to: "https://collect.example.org". The error says why they stay here.
    [[nodiscard]] Result<std::string> destination() const;
    /// Of today; none where the last event was recorded on another day.
    [[nodiscard]] APMDailyCounts countsOfToday() const;
};

/// Lines for a person. Whatever the database holds, these are lines of valid UTF-8.
std::string statusText(const AnalyticsStatus &status);

} // namespace skyflare
