#pragma once

#include "analytics/AnalyticsHost.h"
#include "analytics/MeasurementReader.h"
#include "platform/linux/SystemRandom.h"
#include "platform/sqlite/Database.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingMonitor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>

namespace skyflare {

/// Goes on by 20 ms, or what else it is told, whenever it is asked, so that a transaction ends before all
/// that waits is in it.
class HastyClock final : public Clock {
public:
    explicit HastyClock(const VirtualTime &time) : time_(time) {}
    double setAheadBy = 0; ///< seconds, by whoever sets clocks
    double haste = 0.02;   ///< seconds; 0: uptime is that of `time`

    [[nodiscard]] double secondsSince1970() const override { return time_.secondsSince1970() + setAheadBy; }
    [[nodiscard]] double secondsOfUptime() const override
    {
        return time_.secondsOfUptime() + haste * ++asked_;
    }

private:
    const VirtualTime &time_;
    mutable std::atomic<int> asked_ = 0;
};

class BreakableRandom final : public RandomSource {
public:
    bool isBroken = false;

    Result<> fill(std::span<std::uint8_t> bytes) override
    {
        return isBroken ? Error{"random", 5, "no entropy"} : random_.fill(bytes);
    }

private:
    SystemRandom random_;
};

/// The whole measurement engine, as programs have it, in a folder of its own and in virtual time; it may end
/// and be started anew, as in another process.
///
/// Threads: one; but for a host on other queues.
class EngineInFolder {
public:
    explicit EngineInFolder(PropertyList::Dictionary values = {}) : settings(values) {}
    ~EngineInFolder() { end(); }

    TemporaryFolder folder{memoryFolder()};
    VirtualTime time;
    HastyClock clock{time};
    RecordingConsole console;
    BreakableRandom random;
    APMRemoteConfig settings;
    LaunchSwitches switches;
    APMAnalyticsOptions options;
    HttpTransport *transport = nullptr;
    NetworkMonitor *network = nullptr;
    NotificationCenter notificationCenter;
    std::filesystem::path file = folder / "state" / measurementDatabaseName;
    std::unique_ptr<AnalyticsHost> host;

    std::unique_ptr<AnalyticsHost> makeHost(QueueFactory &queues,
                                            APMDatabase::ExcludeFromBackup excludeFromBackup = {})
    {
        return std::make_unique<AnalyticsHost>(AnalyticsHost::Services{queues,
                                                                       clock,
                                                                       console,
                                                                       random,
                                                                       std::move(excludeFromBackup),
                                                                       {},
                                                                       settings,
                                                                       transport,
                                                                       network,
                                                                       &notificationCenter},
                                               AnalyticsHost::Places{folder / "config", folder / "state", {}},
                                               switches, APMAppData{});
    }
    [[nodiscard]] APMAnalytics &analytics() const { return host->analytics(); }
    /// Ready to be called; what is called waits for start().
    APMAnalytics &launch()
    {
        host = makeHost(time);
        return analytics();
    }
    APMAnalytics &start()
    {
        if (!host)
            launch();
        analytics().startWithConfiguration(options);
        time.runUntilIdle();
        return analytics();
    }
    /// As a program's end. @return whether it was reported before 250 ms had passed
    bool end()
    {
        if (!host)
            return true;
        bool isClosed = false;
        host->close(time.mainQueue(), [&isClosed] { isClosed = true; });
        time.runUntilIdle();
        const bool wasInTime = isClosed;
        time.advance(std::chrono::milliseconds(250));
        host.reset();
        return wasInTime;
    }

    [[nodiscard]] EventTally tally() const { return host->ledger().tally(); }
    [[nodiscard]] std::uint64_t count(LedgerEntry entry) const { return tally().count(entry); }
    /// The ledger against the rows that are there: "balanced", or what is not.
    [[nodiscard]] std::string balance() const
    {
        const auto balanced = tally().balance({0, rows(), bundledEvents()});
        return balanced ? "balanced" : balanced.error().message;
    }

    // As another program sees it; nothing where there is no database that it can read.

    [[nodiscard]] std::optional<std::int64_t> number(const std::string &sql) const
    {
        const auto database = Database::open(file, OpenMode::Query, std::chrono::seconds(1));
        const auto answer = database ? (*database)->number(sql) : Result<std::int64_t>(database.error());
        return answer ? std::optional(*answer) : std::nullopt;
    }
    [[nodiscard]] std::int64_t rows() const { return number("SELECT count(*) FROM raw_events").value_or(0); }
    [[nodiscard]] std::int64_t bundledEvents() const
    {
        const auto seen = number("SELECT count(*) FROM queue").value_or(0) > 0 ? status() : std::nullopt;
        return seen ? seen->bundledEvents : 0;
    }
    /// Events, raw ones and those in bundles.
    [[nodiscard]] std::int64_t waiting() const { return rows() + bundledEvents(); }
    [[nodiscard]] std::optional<MeasurementStatus> status() const
    {
        RecordingMonitor monitor;
        const auto reader = MeasurementReader::open(file, monitor);
        const auto status = reader ? (*reader)->status() : Result<MeasurementStatus>(reader.error());
        return status ? std::optional(*status) : std::nullopt;
    }
    /// Those that wait, oldest first.
    [[nodiscard]] std::vector<APMEvent> stored() const
    {
        std::vector<APMEvent> events;
        RecordingMonitor monitor;
        if (const auto reader = MeasurementReader::open(file, monitor))
            (void)(*reader)->forEachWaitingEvent([&](const RawEvent &raw) { events.push_back(raw.event); });
        return events;
    }
};

} // namespace skyflare
