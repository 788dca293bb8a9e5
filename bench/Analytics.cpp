// The measurement engine as programs have it: what a call costs the thread that makes it, how many events a
// second come from a call to a committed row, what waits before the start, and how a full database opens.

#include "analytics/AnalyticsHost.h"
#include "bench/BareSqlite.h"
#include "bench/Machine.h"
#include "bench/StrictConsole.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/base/AsioQueues.h"
#include "platform/linux/BackgroundThread.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"
#include "platform/sqlite/Database.h"

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <mutex>
#include <thread>

namespace skyflare::bench {

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t fullCount = 100'000;

/// As the app logs a photo.
PropertyList::Dictionary parameters(std::int64_t number)
{
    return {{"light_power", 0.4375},
            {"sensitivity", std::string("Ultra High")},
            {"frequency", std::int64_t{5}},
            {"timestamp", std::string("2023-11-14 22:13:20.000")},
            {"number", number}};
}

class Engine {
public:
    Engine() { launch(); }
    ~Engine() { end(); }

    void launch()
    {
        host_ = std::make_unique<AnalyticsHost>(
            AnalyticsHost::Services{
                queues_, clock_, console_, random_, {}, &becomeBackgroundThread, APMRemoteConfig(raised)},
            AnalyticsHost::Places{folder_.path(), folder_.path(), {}}, LaunchSwitches{}, APMAppData{});
        analytics_ = &host_->analytics();
    }
    void start() { host_->start(); }
    void end()
    {
        std::promise<void> closed;
        host_->close(*main_, [&closed] { closed.set_value(); });
        closed.get_future().wait();
        host_.reset();
    }

    void log(PropertyList::Dictionary with) { analytics_->logEventWithName("catch_photo", std::move(with)); }
    void log(int count)
    {
        for (int number = 0; number < count; ++number)
            log(parameters(number));
    }
    [[nodiscard]] EventTally tally() const { return host_->ledger().tally(); }
    /// Until all that was logged has come to its end, which is to be a row that is committed.
    void waitUntilStored() const
    {
        while (tally().underWay() > 0)
            std::this_thread::sleep_for(100us);
        const EventTally counted = tally();
        require(counted.count(LedgerEntry::Stored) ==
                    counted.count(LedgerEntry::Accepted) + counted.count(LedgerEntry::Raised),
                "an event was not stored");
    }
    /// As another connection counts them.
    [[nodiscard]] std::int64_t rowCount() const
    {
        return *(*Database::open(file(), OpenMode::Query, 1s))->number("SELECT count(*) FROM raw_events");
    }
    [[nodiscard]] std::size_t bytesARow() const
    {
        return static_cast<std::size_t>(*(*Database::open(file(), OpenMode::Query, 1s))
                                             ->number("SELECT max(length(data)) FROM raw_events"));
    }
    [[nodiscard]] std::filesystem::path file() const { return folder_.path() / measurementDatabaseName; }

private:
    const PropertyList::Dictionary raised{
        {"measurement.upload.max_events_per_day", std::int64_t{1'000'000}},
        {"measurement.upload.max_public_events_per_day", std::int64_t{1'000'000}}};
    WorkFolder folder_;
    StrictConsole console_;
    SystemClock clock_;
    SystemRandom random_;
    AsioQueues queues_;
    std::shared_ptr<SerialQueue> main_ = queues_.makeSerialQueue("main");
    std::unique_ptr<AnalyticsHost> host_;
    APMAnalytics *analytics_ = nullptr;
};

double secondsOfOneCall(Engine &engine, std::int64_t number)
{
    PropertyList::Dictionary with = parameters(number);
    const double start = now();
    engine.log(std::move(with));
    return now() - start;
}

std::vector<double> callsWhileBusy()
{
    Engine engine;
    engine.start();
    std::vector<double> calls;
    for (int round = 0; round < 10; ++round) {
        engine.log(2'000);
        for (int number = 0; number < 5'000; ++number)
            calls.push_back(secondsOfOneCall(engine, number));
        require(engine.tally().underWay() > 0, "the engine was not busy");
        engine.waitUntilStored();
    }
    return calls;
}

constexpr int asleepCalls = 1'000;
constexpr auto timeToFallAsleep = 1ms;

/// What no call to a thread that sleeps can be without: a bare thread is woken.
std::vector<double> bareWakeUps()
{
    std::mutex mutex;
    std::condition_variable changed;
    int asked = 0;
    std::jthread thread([&] {
        std::unique_lock lock(mutex);
        for (int seen = 0; seen < asleepCalls; seen = asked)
            changed.wait(lock, [&] { return asked > seen; });
    });
    std::vector<double> wakeUps;
    while (wakeUps.size() < asleepCalls) {
        std::this_thread::sleep_for(timeToFallAsleep);
        const double start = now();
        {
            const std::scoped_lock lock(mutex);
            ++asked;
        }
        changed.notify_one();
        wakeUps.push_back(now() - start);
    }
    return wakeUps;
}

std::vector<double> callsWhileAsleep()
{
    Engine engine;
    engine.start();
    std::vector<double> calls;
    for (int number = 0; number < asleepCalls; ++number) {
        engine.waitUntilStored();
        std::this_thread::sleep_for(timeToFallAsleep);
        calls.push_back(secondsOfOneCall(engine, number));
    }
    return calls;
}

double rowsASecond(Engine &engine, int count)
{
    const double start = now();
    engine.log(count);
    engine.waitUntilStored();
    return count / (now() - start);
}

/// Before the start, when the engine can do nothing but keep them.
std::uint64_t memoryOfWaiting()
{
    Engine engine;
    const std::uint64_t before = currentMemory();
    engine.log(static_cast<int>(fullCount));
    const std::uint64_t taken = currentMemory() - before;
    engine.start();
    engine.waitUntilStored();
    require(engine.rowCount() == fullCount, "not all that waited is stored");
    return taken;
}

struct Opening {
    double atCaller = 0;       ///< seconds
    double untilCommitted = 0; ///< from the start to the row of an event that waited for it
};

Opening open(Engine &engine)
{
    engine.launch();
    engine.log(1);
    const double start = now();
    engine.start();
    Opening opening{.atCaller = now() - start};
    engine.waitUntilStored();
    opening.untilCommitted = now() - start;
    return opening;
}

void measureOpening(Engine &full, Table &table)
{
    std::vector<double> warm;
    std::vector<double> atCaller;
    std::vector<double> cold;
    for (int round = 0; round < 16; ++round) {
        full.end();
        const bool isCold = round % 4 == 3;
        if (isCold)
            forgetFile(full.file());
        const Opening opening = open(full);
        (isCold ? cold : warm).push_back(opening.untilCommitted);
        atCaller.push_back(opening.atCaller);
    }
    require(full.rowCount() == fullCount, "the full table is not full");
    table.add({"opening 100,000 rows, warm, checked, until the first event is committed",
               duration(median(warm)), "cold: " + duration(median(cold)),
               duration(median(atCaller)) + " at the caller", "<= 100 ms", median(warm) <= 0.1});
}

struct CallGoal {
    const char *what;
    double median; ///< seconds
    double percentile99;
};

void measureCalls(Table &table, const CallGoal &goal, const std::vector<double> &calls,
                  const std::vector<double> &wakeUps)
{
    const double middle = median(calls);
    const double late = percentile99(calls);
    std::string beside = "99 of 100: " + duration(late);
    if (!wakeUps.empty())
        beside +=
            "; waking a bare thread: " + duration(median(wakeUps)) + ", " + duration(percentile99(wakeUps));
    table.add({std::string("the call, five parameters, ") + goal.what, duration(middle), beside,
               wakeUps.empty() ? std::string() : ratio(middle / median(wakeUps)),
               "<= " + duration(goal.median) + ", <= " + duration(goal.percentile99),
               middle <= goal.median && late <= goal.percentile99});
}

void measureRows(Engine &full, Table &table)
{
    constexpr int batch = 50'000;
    std::vector<double> empties;
    std::vector<double> fulls;
    std::vector<double> bares;
    for (int round = 0; round < 7; ++round) {
        {
            Engine empty;
            empty.start();
            empty.log(1);
            empty.waitUntilStored();
            empties.push_back(rowsASecond(empty, batch));
            const auto stored = static_cast<std::int64_t>(empty.tally().count(LedgerEntry::Stored));
            require(empty.rowCount() == stored && stored > batch, "a row is missing");
        }
        fulls.push_back(rowsASecond(full, batch));
        bares.push_back(bareRowsASecond(batch, 2'000, full.bytesARow()));
    }
    require(full.rowCount() == fullCount, "the full table is not full");
    const double empty = median(empties);
    const double bare = median(bares);
    table.add({"from call to committed row, everything updated", rows(empty), "bare SQLite: " + rows(bare),
               ratio(empty / bare), ">= 100000 rows/s", empty >= 100'000});
    table.add({"the same with 100,000 rows waiting, trimmed at every insert", rows(median(fulls)),
               "empty: " + rows(empty), ratio(median(fulls) / empty), ">= 0.5 x",
               median(fulls) >= 0.5 * empty});
}

int run()
{
    Table table("The measurement engine");
    const std::uint64_t waiting = memoryOfWaiting(); // first: what is freed later would be taken again
    measureCalls(table, {"engine busy", 1e-6, 15e-6}, callsWhileBusy(), {});
    measureCalls(table, {"engine asleep", 15e-6, 40e-6}, callsWhileAsleep(), bareWakeUps());
    Engine full;
    full.start();
    full.log(static_cast<int>(fullCount));
    full.waitUntilStored();
    measureRows(full, table);
    table.add({"100,000 events waiting before the start",
               megabytes(waiting),
               std::to_string(waiting / fullCount) + " bytes an event",
               {},
               "<= 120 MB",
               waiting <= 120'000'000});
    measureOpening(full, table);
    table.print();
    return EXIT_SUCCESS;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
