#pragma once

#include "analytics/FIRAnalytics.h"
#include "analytics/pipeline/APMConsoleMonitor.h"
#include "analytics/pipeline/LaunchArguments.h"

#include <chrono>
#include <filesystem>

namespace skyflare {

/// The engine as a program has it: what APMAnalytics borrows, put together, and the shared one of
/// FIRAnalytics as long as this lives. Events may be logged from the moment it is made.
///
/// Threads: main. Borrows its Services, which must outlive it; it may go when close() has reported, and what
/// its queues had in hand then has ended.
class AnalyticsHost {
public:
    struct Services {
        QueueFactory &queues;
        const Clock &clock;
        Console &console;
        RandomSource &random;
        APMDatabase::ExcludeFromBackup excludeFromBackup;
        std::function<void()> prepareThread = {};         ///< run first on each of the engine's threads
        APMRemoteConfig settings = {};                    ///< until the server gives others
        HttpTransport *transport = nullptr;               ///< null: nothing is sent or fetched
        NetworkMonitor *network = nullptr;                ///< null: not known
        NotificationCenter *notificationCenter = nullptr; ///< may be null
    };
    struct Places {
        std::filesystem::path config; ///< the folder of the settings
        std::filesystem::path state;  ///< the folder of the database
        Deployment deployment;        ///< what the options are read from
    };

    AnalyticsHost(const Services &services, const Places &places, const LaunchSwitches &switches,
                  APMAppData app);
    ~AnalyticsHost();

    /// Starts the engine with the deployer's options.
    void start();

    [[nodiscard]] APMAnalytics &analytics() { return analytics_; }
    [[nodiscard]] const EventLedger &ledger() const { return ledger_; }

    /// As APMAnalytics::close(), 250 ms at most.
    void close(SerialQueue &mainQueue, std::function<void()> closed);

private:
    static constexpr std::chrono::milliseconds longestClosing{250};

    EventLedger ledger_;
    const Deployment deployment_;
    UserDefaults suiteDefaults_;
    UserDefaults configDefaults_;
    APMConsoleMonitor monitor_;
    APMPersistedSuite suite_;
    MeasurementConfig config_;
    APMAnalytics analytics_;
};

} // namespace skyflare
