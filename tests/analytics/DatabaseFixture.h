#pragma once

#include "analytics/store/APMDatabase.h"
#include "tests/fakes/RecordingMonitor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>

namespace skyflare {

class MemoryConfig final : public APMPersistedConfig {
public:
    double last = 0;
    [[nodiscard]] double lastStaleDataDeletion() const override { return last; }
    void setLastStaleDataDeletion(double secondsSince1970) override { last = secondsSince1970; }
};

/// An older version's file: without the columns that came later, with another declaration of the time.
constexpr const char *olderVersion = R"(
    CREATE TABLE raw_events (name TEXT NOT NULL, timestamp INTEGER NOT NULL,
                             metadata_fingerprint INTEGER NOT NULL, data BLOB NOT NULL, note VARCHAR(9));
    INSERT INTO raw_events (rowid, name, timestamp, metadata_fingerprint, data, note)
        VALUES (3, 'a', 5, 1, x'0A0161', 'x'), (7, 'b', 6, 1, x'0A0162', NULL);
    CREATE TABLE queue (data BLOB NOT NULL, bundle_end_timestamp REAL NOT NULL);
    INSERT INTO queue VALUES (x'01', 2);)";

/// A measurement database in a folder of the test's own.
struct DatabaseFixture {
    using Names = std::vector<std::string>;

    TemporaryFolder folder{memoryFolder()};
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
