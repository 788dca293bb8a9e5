#pragma once

#include "analytics/AnalyticsHost.h"
#include "analytics/MeasurementReader.h"
#include "platform/linux/SystemRandom.h"
#include "platform/sqlite/Database.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingMonitor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

namespace skyflare {

/// Where nothing has to wait for a disk, if there is such a place.
inline std::filesystem::path memoryFolder()
{
    const std::filesystem::path memory = "/dev/shm";
    return access(memory.c_str(), W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

/// Goes on by 20 ms whenever it is asked, so that a transaction ends before all that waits is in it.
class HastyClock final : public Clock {
public:
    explicit HastyClock(const VirtualTime &time) : time_(time) {}
    [[nodiscard]] double secondsSince1970() const override { return time_.secondsSince1970(); }
    [[nodiscard]] double secondsOfUptime() const override
    {
        return time_.secondsOfUptime() + (passed_ += 0.02);
    }

private:
    const VirtualTime &time_;
    mutable double passed_ = 0;
};

/// The whole measurement engine, as programs have it, in a folder of its own and in virtual time; it may end
/// and be started anew, as in another process.
///
/// Threads: one.
class EngineInFolder {
public:
    explicit EngineInFolder(PropertyList::Dictionary values = {}) : settings(values) {}
    ~EngineInFolder() { end(); }

    TemporaryFolder folder{memoryFolder()};
    VirtualTime time;
    HastyClock clock{time};
    RecordingConsole console;
    SystemRandom random;
    APMRemoteConfig settings;
    std::filesystem::path file = folder / "state" / measurementDatabaseName;
    std::unique_ptr<AnalyticsHost> host;

    /// Ready to be called; what is called waits for start().
    APMAnalytics &launch()
    {
        host = std::make_unique<AnalyticsHost>(
            AnalyticsHost::Services{time, clock, console, random, {}, {}, settings},
            AnalyticsHost::Places{folder / "config", folder / "state", {folder.path()}}, LaunchSwitches{},
            APMAppData{});
        return host->analytics();
    }
    APMAnalytics &start()
    {
        launch();
        host->start();
        time.runUntilIdle();
        return host->analytics();
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
        return wasInTime && isClosed;
    }

    [[nodiscard]] EventTally tally() const { return host->ledger().tally(); }

    /// As another program sees it; nothing where there is no database that it can read.
    [[nodiscard]] std::optional<std::int64_t> number(const std::string &sql) const
    {
        const auto database = Database::open(file, OpenMode::Query, std::chrono::seconds(1));
        const auto answer = database ? (*database)->number(sql) : Result<std::int64_t>(database.error());
        return answer ? std::optional(*answer) : std::nullopt;
    }
    [[nodiscard]] std::int64_t rows() const { return number("SELECT count(*) FROM raw_events").value_or(0); }
    /// Nothing where there is no database that it can read.
    [[nodiscard]] std::optional<MeasurementStatus> status()
    {
        RecordingMonitor monitor;
        const auto reader = MeasurementReader::open(file, monitor);
        const auto status = reader ? (*reader)->status() : Result<MeasurementStatus>(reader.error());
        return status ? std::optional(*status) : std::nullopt;
    }
};

} // namespace skyflare
