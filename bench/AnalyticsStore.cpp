// How many events a second the measurement store takes, empty and full, and how quickly a full one opens.

#include "analytics/store/APMDatabase.h"
#include "bench/BareSqlite.h"
#include "bench/Machine.h"
#include "bench/StrictMonitor.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/linux/SystemClock.h"

#include <algorithm>
#include <cstdlib>

namespace skyflare::bench {

namespace {

constexpr std::int64_t fullCount = 100'000;
constexpr int eventsATransaction = 2'000;

APMEvent event(std::int64_t number)
{
    return {"app",
            "catch_photo",
            1.7e9 + static_cast<double>(number),
            1.7e9,
            {{"light_power", APMValue(0.4375)},
             {"sensitivity", APMValue(std::string("Ultra High"))},
             {"frequency", APMValue(std::int64_t{5})},
             {"timestamp", APMValue(std::string("2023-11-14 22:13:20.000"))},
             {"number", APMValue(number)}}};
}

struct Measured {
    WorkFolder folder;
    std::filesystem::path file = folder.path() / measurementDatabaseName;
    StrictMonitor monitor;
    NoConfig config;
    SystemClock clock;
    StoreLimits limits{.maxStoredEvents = fullCount};

    std::unique_ptr<APMDatabase> open()
    {
        auto database = APMDatabase::open(file, {monitor, clock, config, {}}, limits);
        require(database.has_value(), "the database does not open");
        return *std::move(database);
    }
};

/// The engine's work for one event: metadata, event, aggregates, daily counts.
Result<> store(APMDatabase &database, const RawEventMetadata &metadata, std::int64_t number)
{
    if (const auto done = database.insertIfNotExistsRawEventMetadata(metadata); !done)
        return done.error();
    if (const auto done = database.insertRawEvent(event(number), metadata.fingerprint, IsRealtime::No); !done)
        return done.error();
    if (const auto done =
            database.updateEventAggregates({"catch_photo", number, number, 1.7e9, {}, {}, {}, {}, {}, {}});
        !done)
        return done.error();
    return database.updateDailyCounts({1, 0, number, number, 0, 0, 0});
}

double rowsASecond(APMDatabase &database, std::int64_t from, int count)
{
    const auto metadata = RawEventMetadata::of({{{"level", "app", 1, APMValue(2.5)}}, {.appId = "1:2:3"}});
    const double start = now();
    for (int done = 0; done < count; done += eventsATransaction) {
        const auto stored = database.performTransactionWithError([&]() -> Result<> {
            for (int i = 0; i < eventsATransaction; ++i) {
                if (const auto one = store(database, metadata, from + done + i); !one)
                    return one.error();
            }
            return {};
        });
        require(stored.has_value(), "an event was not stored");
    }
    return count / (now() - start);
}

int run()
{
    constexpr int batch = 20'000;
    Measured full;
    auto fullDatabase = full.open();
    rowsASecond(*fullDatabase, 0, fullCount);
    std::vector<double> empties;
    std::vector<double> fulls;
    std::vector<double> bares;
    for (int round = 0; round < 9; ++round) {
        Measured empty;
        empties.push_back(rowsASecond(*empty.open(), 0, batch));
        fulls.push_back(rowsASecond(*fullDatabase, fullCount + round * batch, batch));
        bares.push_back(bareRowsASecond(batch, eventsATransaction, 170));
    }
    require(*fullDatabase->rawEventCount() == fullCount, "the full table is not full");
    fullDatabase.reset();
    std::vector<double> openings;
    for (int round = 0; round < 11; ++round) {
        const double start = now();
        const auto database = full.open();
        openings.push_back(now() - start);
    }
    Table table("The measurement store");
    const double emptySpeed = median(empties);
    const double fullSpeed = median(fulls);
    const std::string bare = "bare SQLite: " + rows(median(bares));
    table.add({"events into an empty table, everything updated", rows(emptySpeed), bare,
               ratio(emptySpeed / median(bares)), ">= 100000 rows/s", emptySpeed >= 100'000});
    table.add({"the same into a full one, trimmed at every insert", rows(fullSpeed),
               "empty: " + rows(emptySpeed), ratio(fullSpeed / emptySpeed), ">= 0.5 x",
               fullSpeed >= 0.5 * emptySpeed});
    const double opening = median(openings);
    table.add(
        {"opening 100,000 rows, warm, checked", duration(opening), {}, {}, "<= 100 ms", opening <= 0.1});
    table.print();
    return EXIT_SUCCESS;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
