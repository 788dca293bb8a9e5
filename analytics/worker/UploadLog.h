#pragma once

#include "analytics/model/LogText.h"

#include <cmath>
#include <string>

/// What uploading says, and the fetching of the settings.
namespace skyflare::uploadLog {

using Level = APMMonitor::Level;

// Schedule
inline constexpr LogText suspended{Level::Debug, 26000,
                                   "Upload has been suspended. Will update scheduling later. Seconds"};
inline constexpr LogText noNextTime{Level::Debug, 26001,
                                    "No next uploading time. Upload task will not be scheduled"};
inline constexpr LogText nothingToSchedule{Level::Debug, 26002,
                                           "No data to upload. Upload task will not be scheduled"};
inline constexpr LogText noNetwork{Level::Debug, 26003, "No network. Upload task will not be scheduled"};
inline constexpr LogText taskExists{
    Level::Debug, 26004, "Do not schedule an upload task. Task already exists. Will be executed in seconds"};
inline constexpr LogText scheduled{Level::Debug, 26005,
                                   "Upload task scheduled to be executed in approx. (s)"};

// Upload
inline constexpr LogText isPending{Level::Debug, 26006,
                                   "Network operation is pending. Ignoring upload request"};
inline constexpr LogText notConnected{Level::Debug, 26007, "Network not connected, ignoring upload request"};
inline constexpr LogText noData{Level::Debug, 26008, "No data to upload"};
inline constexpr LogText uploading{Level::Info, 26009,
                                   "Uploading events. Elapsed time since last successful upload (s)"};
inline constexpr LogText sent{Level::Debug, 26010, "Measurement data sent to network. Timestamp (ms), data"};
inline constexpr LogText noBundles{Level::Error, 26011, "Bundle list is empty. Cancelling upload"};
inline constexpr LogText stillInProgress{Level::Error, 26012,
                                         "Set uploading progress before finishing the previous upload"};
inline constexpr LogText cameToNothing{Level::Warning, 26013,
                                       "Nothing could be uploaded. It is tried again later. Seconds, error"};

// Completion
inline constexpr LogText succeeded{Level::Info, 26014, "Successful upload. Got network response. Code, size"};
inline constexpr LogText notDeleted{
    Level::Error, 26015, "Unable to delete uploaded bundles. Uploads will be suspended for seconds"};
inline constexpr LogText failed{Level::Warning, 26016,
                                "Network upload failed. Will retry later. Code, error"};
inline constexpr LogText retriesNotCounted{Level::Error, 26017,
                                           "Failed to update the bundles' retry counts. Error"};

// Hosts and settings
inline constexpr LogText hostUnusable{Level::Error, 26020,
                                      "The host is unusable, and is not asked. Key, reason"};
inline constexpr LogText settingsFetched{Level::Info, 26021, "Fetched the settings. Code, size"};
inline constexpr LogText settingsNotFetched{
    Level::Warning, 26022, "Could not fetch the settings. Those before still hold. Code, error"};
inline constexpr LogText settingsNotKept{Level::Warning, 26023,
                                         "The settings hold until the program ends. Error"};

inline std::string seconds(double number)
{
    return std::to_string(std::llround(number));
}

} // namespace skyflare::uploadLog
