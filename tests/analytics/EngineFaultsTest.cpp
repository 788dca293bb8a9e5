// What the whole engine does where its database is not as it should be, hangs, or the process is killed.

#include "platform/base/AsioQueues.h"
#include "platform/base/Files.h"
#include "tests/fakes/EngineInFolder.h"
#include "tests/fakes/FileFaults.h"

#include <doctest/doctest.h>
#include <sys/wait.h>

#include <future>
#include <latch>
#include <numeric>

using namespace skyflare;
using namespace std::chrono_literals;
using Fault = fileFaults::Kind;

namespace {

constexpr std::chrono::seconds deadline{60};

/// Events named "e" with the numbers that follow.
void log(APMAnalytics &analytics, std::int64_t first, std::int64_t count)
{
    for (std::int64_t number = first; number < first + count; ++number)
        analytics.logEventWithName("e", {{"n", number}});
}

/// The numbers of the events "e" that wait, oldest first.
std::vector<std::int64_t> numbers(const EngineInFolder &engine)
{
    std::vector<std::int64_t> found;
    RecordingMonitor monitor;
    const auto reader = MeasurementReader::open(engine.file, monitor);
    REQUIRE(reader);
    REQUIRE((*reader)->forEachWaitingEvent([&found](const RawEvent &raw) {
        if (raw.event.name == "e")
            found.push_back(*raw.event.parameters.at(0).value.integer());
    }));
    return found;
}

std::vector<std::int64_t> fromTo(std::int64_t first, std::int64_t last)
{
    std::vector<std::int64_t> all(std::size_t(last - first + 1));
    std::iota(all.begin(), all.end(), first);
    return all;
}

void checkBalance(const EngineInFolder &engine)
{
    const auto balanced = engine.tally().balance(0, std::uint64_t(engine.rows()));
    CHECK_MESSAGE(balanced, balanced.error().message);
}

/// A program on real queues, whose database does not answer before it is told to.
struct HangingEngine {
    EngineInFolder things; ///< but not its engine
    std::latch answers{1};
    std::promise<void> hangs;
    AsioQueues queues;
    std::shared_ptr<SerialQueue> main = queues.makeSerialQueue("main");
    AnalyticsHost host{{queues, things.time, things.console, things.random,
                        [this](const std::filesystem::path &) -> Result<> {
                            hangs.set_value();
                            answers.wait();
                            return {};
                        }},
                       {things.folder / "config", things.folder / "state", {}},
                       {},
                       {}};
};

} // namespace

TEST_CASE("whatever is wrong with its database, events go on, and are stored again once it can be used")
{
    std::unique_ptr<Database> other;
    std::unique_ptr<OwnerLock> owner;
    const auto own = [&owner](const EngineInFolder &engine) {
        owner = std::make_unique<OwnerLock>(*OwnerLock::acquire(engine.file));
    };
    const auto lock = [&other](const EngineInFolder &engine) {
        other = *Database::open(engine.file, OpenMode::Write, 0s);
        REQUIRE(other->execute("BEGIN IMMEDIATE"));
    };
    const auto fail = [](Fault fault) {
        return [fault](const EngineInFolder &) { fileFaults::plan(fault, 1); };
    };
    struct Row {
        std::string what;
        std::function<void(const EngineInFolder &)> spoil;
        bool isOpen; ///< while the engine has it open
        std::uint64_t failed, lost;
        std::vector<std::int64_t> stored;
    };
    const auto all = fromTo(1, 9);
    const auto withoutFailed = std::vector<std::int64_t>{1, 2, 3, 7, 8, 9};
    const auto madeAnew = fromTo(4, 9);
    const auto remove = [](const EngineInFolder &engine) { std::filesystem::remove(engine.file); };
    const auto removeAll = [](const EngineInFolder &engine) {
        std::filesystem::remove_all(engine.file.parent_path());
    };
    const auto garbage = [](const EngineInFolder &engine) {
        REQUIRE(replaceFile(engine.file, Bytes(9000, 'x')));
    };
    const Row rows[] = {
        {"locked", lock, false, 3, 0, withoutFailed},
        {"locked while open", lock, true, 3, 0, withoutFailed},
        {"another process's", own, false, 3, 0, withoutFailed},
        {"read-only", fail(Fault::ReadOnly), false, 3, 0, withoutFailed},
        {"full", fail(Fault::FailFromThenOn), false, 3, 0, withoutFailed},
        {"full while open", fail(Fault::FailFromThenOn), true, 3, 0, withoutFailed},
        {"missing", remove, false, 0, 0, madeAnew},
        {"its folder is missing", removeAll, false, 0, 0, madeAnew},
        {"vanished while open", remove, true, 0, 4, madeAnew},
        {"its folder vanished while open", removeAll, true, 0, 4, madeAnew},
        {"garbage", garbage, false, 0, 0, madeAnew},
        {"as it should be", [](const EngineInFolder &) {}, true, 0, 0, all},
    };
    for (const Row &row : rows) {
        CAPTURE(row.what);
        EngineInFolder engine;
        log(engine.start(), 1, 3);
        engine.time.runUntilIdle();
        if (!row.isOpen)
            REQUIRE(engine.end());
        row.spoil(engine);
        if (!row.isOpen)
            engine.start();
        log(engine.host->analytics(), 4, 3);
        engine.time.runUntilIdle();
        CHECK(engine.tally().count(LedgerEntry::Failed) == row.failed);
        CHECK(engine.tally().underWay() == 0);

        fileFaults::plan(Fault::None);
        other.reset();
        owner.reset();
        engine.time.advance(61s);
        log(engine.host->analytics(), 7, 3);
        engine.time.runUntilIdle();
        CHECK(engine.tally().count(LedgerEntry::Failed) == row.failed);
        CHECK(engine.tally().count(LedgerEntry::Lost) == row.lost);
        checkBalance(engine);
        CHECK(numbers(engine) == row.stored);
    }
}

TEST_CASE("while the database hangs every call returns, and the end comes in time")
{
    HangingEngine engine;
    log(engine.host.analytics(), 1, 3);
    engine.host.start();
    REQUIRE(engine.hangs.get_future().wait_for(deadline) == std::future_status::ready);
    std::promise<void> closed;
    // What waited for anything would wait for ever here.
    log(engine.host.analytics(), 4, 100);
    engine.host.analytics().setUserID(std::string("u"));
    engine.host.analytics().resetAnalyticsData();
    engine.host.close(*engine.main, [&closed] { closed.set_value(); });
    REQUIRE(closed.get_future().wait_for(deadline) == std::future_status::ready);
    log(engine.host.analytics(), 104, 1);
    engine.answers.count_down();
    engine.queues.close();
    const EventTally tally = engine.host.ledger().tally();
    CHECK(tally.count(LedgerEntry::Accepted) == 104);
    CHECK(tally.count(LedgerEntry::Abandoned) > 0);
    CHECK(tally.balance(0, std::uint64_t(engine.things.rows())));
}

TEST_CASE("what was accepted before the end is stored, in order")
{
    EngineInFolder engine;
    APMAnalytics &analytics = engine.start();
    fileFaults::plan(Fault::FailOnce); // none: they are counted
    log(analytics, 1, 5000);
    CHECK(fileFaults::calls() == 0); // not by the caller
    REQUIRE(engine.end());
    CHECK(fileFaults::calls() > 0);
    fileFaults::plan(Fault::None);
    CHECK(numbers(engine) == fromTo(1, 5000));
    engine.start();
    checkBalance(engine);
    log(engine.host->analytics(), 5001, 1);
    REQUIRE(engine.end());
    CHECK(numbers(engine) == fromTo(1, 5001));
}

TEST_CASE("killed at any change to its files, it keeps every event that was committed, once")
{
    const auto run = [](long at) {
        EngineInFolder engine({{"measurement.store.max_stored_events_per_app", std::int64_t{25}}});
        int ends[2]{};
        REQUIRE(pipe(ends) == 0);
        const pid_t child = fork();
        if (child == 0) {
            fileFaults::plan(Fault::KillAtChange, at);
            APMAnalytics &analytics = engine.start();
            std::int64_t told[] = {0, 0}; // events, calls
            bool isTold = true;
            for (const std::int64_t batch : {1, 6, 2, 9, 3, 12}) {
                log(analytics, told[0] + 1, batch);
                analytics.setUserPropertyString(std::to_string(batch), "p");
                engine.time.runUntilIdle();
                told[0] += batch;
                told[1] = fileFaults::calls();
                isTold = isTold && write(ends[1], told, sizeof told) == sizeof told;
            }
            _exit(isTold ? 0 : 1);
        }
        close(ends[1]);
        std::int64_t told[] = {0, 0};
        while (read(ends[0], told, sizeof told) == sizeof told)
            ;
        close(ends[0]);
        int status = 0;
        REQUIRE(waitpid(child, &status, 0) == child);
        CHECK(WIFSIGNALED(status) == (at > 0));
        engine.start();
        checkBalance(engine);
        CHECK(engine.status()->integrity == "ok");
        const auto stored = numbers(engine);
        const std::int64_t last = stored.empty() ? 0 : stored.back();
        CHECK(last >= told[0]);
        CHECK(stored == fromTo(last - std::int64_t(stored.size()) + 1, last));
        CHECK(std::int64_t(stored.size()) == std::min<std::int64_t>(last, 25));
        return told[1];
    };
    const long changes = run(0);
    CHECK(changes > 30);
    for (long at = 1; at <= changes; ++at) {
        CAPTURE(at);
        run(at);
    }
}
