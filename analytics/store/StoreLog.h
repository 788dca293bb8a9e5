#pragma once

#include "analytics/model/APMMonitor.h"
#include "platform/base/Result.h"

#include <string>
#include <string_view>

namespace skyflare::storeLog {

/// What the store says in the engine's log, with the number of the message.
struct Message {
    APMMonitor::Level level;
    int code;
    std::string_view text;
};

using Level = APMMonitor::Level;

inline constexpr Message sqliteFailure{Level::Error, 22000, ""}; // the text is the error's
inline constexpr Message transactionFailed{Level::Error, 22001, "Transaction failed"};
inline constexpr Message rollbackFailed{Level::Error, 22002,
                                        "Failed to rollback transaction after exception"};
inline constexpr Message notExcludedFromBackup{Level::Warning, 22003,
                                               "Failed to exclude database file from backup"};
inline constexpr Message validationFailed{Level::Warning, 22004,
                                          "Database validation failed. Creating it anew. Answer"};
inline constexpr Message notDeleted{Level::Error, 22005,
                                    "Failed to delete old database file after failed validation. Error"};
inline constexpr Message tableNotEnsured{Level::Error, 22006, "Failed to ensure table. Table, error"};
inline constexpr Message savingBundle{Level::Debug, 22007, "Saving bundle. size (bytes)"};
inline constexpr Message bundleOutsideTimeSpan{Level::Warning, 22008,
                                               "Storing bundle outside of the max uploading time span"};
inline constexpr Message unreadableBundle{Level::Error, 22009, "Cannot read bundle. Row id, error"};
inline constexpr Message unreadableEvent{Level::Error, 22010, "Cannot read raw event. Row id, error"};
inline constexpr Message unreadableAttribute{Level::Error, 22011, "Cannot read user property. Name, error"};
inline constexpr Message refused{Level::Error, 22012, ""}; // the text is the error's
inline constexpr Message staleDataDeleted{Level::Debug, 22013, "Deleted stale raw events and bundles. Count"};
inline constexpr Message notCompacted{Level::Warning, 22014, "Failed to compact database after reset. Error"};

inline void write(APMMonitor &monitor, const Message &message, std::string_view detail = {})
{
    if (!monitor.isLogging(message.level))
        return;
    std::string line(message.text);
    if (!detail.empty())
        line.append(line.empty() ? "" : ": ").append(detail);
    monitor.log(message.level, message.code, line);
}

/// An error of the store's own, which it logs.
inline Error refusal(APMMonitor &monitor, std::string text)
{
    write(monitor, refused, text);
    return Error{"store", 1, std::move(text)};
}

} // namespace skyflare::storeLog
