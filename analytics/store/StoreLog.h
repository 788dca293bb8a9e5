#pragma once

#include "analytics/model/LogText.h"
#include "platform/base/Result.h"

#include <string>
#include <string_view>

/// What the store says.
namespace skyflare::storeLog {

using Level = APMMonitor::Level;

inline constexpr LogText sqliteFailure{Level::Error, 22000, ""}; // the text is the error's
inline constexpr LogText transactionFailed{Level::Error, 22001, "Transaction failed"};
inline constexpr LogText rollbackFailed{Level::Error, 22002,
                                        "Failed to rollback transaction after exception"};
inline constexpr LogText notExcludedFromBackup{Level::Warning, 22003,
                                               "Failed to exclude database file from backup"};
inline constexpr LogText validationFailed{Level::Warning, 22004,
                                          "Database validation failed. Creating it anew. Answer"};
inline constexpr LogText notDeleted{Level::Error, 22005,
                                    "Failed to delete old database file after failed validation. Error"};
inline constexpr LogText tableNotEnsured{Level::Error, 22006, "Failed to ensure table. Table, error"};
inline constexpr LogText savingBundle{Level::Debug, 22007, "Saving bundle. size (bytes)"};
inline constexpr LogText bundleOutsideTimeSpan{Level::Warning, 22008,
                                               "Storing bundle outside of the max uploading time span"};
inline constexpr LogText unreadableBundle{Level::Error, 22009, "Cannot read bundle. Row id, error"};
inline constexpr LogText unreadableEvent{Level::Error, 22010, "Cannot read raw event. Row id, error"};
inline constexpr LogText unreadableAttribute{Level::Error, 22011, "Cannot read user property. Name, error"};
inline constexpr LogText refused{Level::Error, 22012, ""}; // the text is the error's
inline constexpr LogText staleDataDeleted{Level::Debug, 22013, "Deleted stale raw events and bundles. Count"};
inline constexpr LogText notCompacted{Level::Warning, 22014, "Failed to compact database after reset. Error"};

inline constexpr LogText indexNotMade{Level::Warning, 22015, "Failed to make index. Index, error"};

inline constexpr LogText unreadableMetadata{
    Level::Error, 22016, "Cannot read metadata of raw events. They go without it. Fingerprint, error"};

/// An error of the store's own, which it logs.
inline Error refusal(APMMonitor &monitor, std::string text)
{
    writeLog(monitor, refused, text);
    return Error{"store", 1, std::move(text)};
}

} // namespace skyflare::storeLog
