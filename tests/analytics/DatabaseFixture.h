#pragma once

#include "analytics/store/APMDatabase.h"
#include "tests/fakes/RecordingMonitor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>
#include <unistd.h>

namespace skyflare {

class MemoryConfig final : public APMPersistedConfig {
public:
    double last = 0;
    [[nodiscard]] double lastStaleDataDeletion() const override { return last; }
    void setLastStaleDataDeletion(double secondsSince1970) override { last = secondsSince1970; }
};

/// Where nothing has to wait for a disk.
inline std::filesystem::path inMemory()
{
    const std::filesystem::path memory = "/dev/shm";
    return access(memory.c_str(), W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

/// A measurement database in a folder of the test's own.
struct DatabaseFixture {
    using Names = std::vector<std::string>;

    explicit DatabaseFixture(const std::filesystem::path &in = std::filesystem::temp_directory_path())
        : folder(in)
    {
    }
    TemporaryFolder folder;
    RecordingMonitor monitor;
    VirtualTime time;
    MemoryConfig config;
    StoreLimits limits;
    std::filesystem::path file = folder / "mipeme-app-measurement.sql";

    Result<std::unique_ptr<APMDatabase>> tryOpen()
    {
        return APMDatabase::open(file, {monitor, time, config, {}}, limits,
                                 {.busyTimeout = std::chrono::milliseconds(0), .files = {}});
    }
    std::unique_ptr<APMDatabase> open()
    {
        auto database = tryOpen();
        if (!database)
            FAIL(database.error().description());
        return *std::move(database);
    }
    /// Another connection to the file, which knows nothing of tables.
    [[nodiscard]] std::unique_ptr<Database> raw() const
    {
        return *Database::open(file, OpenMode::Write, std::chrono::milliseconds(0));
    }
    /// Makes the file as another version would have.
    void make(const std::string &sql) const { REQUIRE(raw()->execute(sql)); }
    /// The first column of every row.
    [[nodiscard]] Names ask(const std::string &sql) const
    {
        const auto database = raw();
        auto statement = database->prepare(sql);
        REQUIRE(statement);
        Names rows;
        while (*statement->step())
            rows.push_back(statement->text(0).value_or("NULL"));
        return rows;
    }
    [[nodiscard]] Names storedNames() const { return ask("SELECT name FROM raw_events ORDER BY rowid"); }

    [[nodiscard]] APMEvent event(const std::string &name, double age = 0) const
    {
        return {"app", name, time.secondsSince1970() - age, 0, {{"n", APMValue(std::int64_t{7})}}};
    }
};

} // namespace skyflare
