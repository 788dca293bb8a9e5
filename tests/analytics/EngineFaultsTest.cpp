// What the whole engine does where its database is not as it should be, hangs, or the process is killed.

#include "platform/base/AsioQueues.h"
#include "platform/base/Files.h"
#include "tests/analytics/DatabaseFixture.h"
#include "tests/fakes/EngineInFolder.h"
#include "tests/fakes/FileFaults.h"

#include <doctest/doctest.h>
#include <sys/wait.h>

#include <fstream>
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
    for (const APMEvent &event : engine.stored())
        if (event.name == "e")
            found.push_back(*event.parameters.at(0).value.integer());
    return found;
}

std::vector<std::int64_t> fromTo(std::int64_t first, std::int64_t last)
{
    std::vector<std::int64_t> all(std::size_t(last - first + 1));
    std::iota(all.begin(), all.end(), first);
    return all;
}

void makeUnreadable(const std::filesystem::path &file, std::uintmax_t from)
{
    std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
    bytes.seekp(std::streamoff(from));
    bytes << std::string(std::filesystem::file_size(file) - from, 'U');
}

/// How far an engine has come.
struct Told {
    std::int64_t lastKept = 0;
    std::int64_t changes = 0;
};

/// An engine with little room, on a file of an older version.
struct UpgradedEngine : EngineInFolder {
    UpgradedEngine() : EngineInFolder({{"measurement.store.max_stored_events_per_app", std::int64_t{25}}})
    {
        std::filesystem::create_directories(file.parent_path());
        REQUIRE((*Database::open(file, OpenMode::Write, 0s))->execute(olderVersion));
    }

    /// Everything that changes the file, in transactions of different sizes.
    void live(const std::function<void(Told)> &tell)
    {
        start();
        std::int64_t last = 0;
        const auto logAndTell = [&](std::int64_t more) {
            log(analytics(), last + 1, more);
            analytics().setUserPropertyString(std::to_string(more), "p");
            time.runUntilIdle();
            tell({last += more, fileFaults::calls()});
        };
        for (const std::int64_t more : {1, 6, 2, 9, 3, 12})
            logAndTell(more);
        tell({}); // what was stored may go now
        analytics().resetAnalyticsData();
        logAndTell(3);
        tell({});
        time.advance(std::chrono::hours(24 * 29));
        logAndTell(2);
    }
    void checkIsSound() const
    {
        CHECK(balance() == "balanced");
        CHECK(count(LedgerEntry::Found) == 2); // of the older version
        CHECK(count(LedgerEntry::Lost) == 0);
        CHECK(status()->integrity == "ok");
    }
};

} // namespace

TEST_CASE("whatever is wrong with its database, events go on, and are stored again once it can be used")
{
    std::unique_ptr<Database> other;
    std::unique_ptr<OwnerLock> owner;
    const auto own = [&owner](const EngineInFolder &engine) {
        owner = std::make_unique<OwnerLock>(*OwnerLock::acquire(engine.file));
    };
    const auto lock = [&other](const char *how) {
        return [&other, how](const EngineInFolder &engine) {
            other = *Database::open(engine.file, OpenMode::Write, 0s);
            REQUIRE(other->execute(how));
        };
    };
    const auto damage = [](const EngineInFolder &engine) {
        const auto database = *Database::open(engine.file, OpenMode::Write, 0s);
        REQUIRE(database->execute("CREATE TABLE t(a); PRAGMA wal_checkpoint(TRUNCATE)")); // nothing is cached
        makeUnreadable(engine.file, 4096);
    };
    const auto damageIndex = [](const EngineInFolder &engine) {
        REQUIRE((*Database::open(engine.file, OpenMode::Write, 0s))
                    ->execute("CREATE TABLE t(a); CREATE INDEX i ON t(a); INSERT INTO t VALUES (1), (2)"));
        makeUnreadable(engine.file, std::filesystem::file_size(engine.file) - 4096);
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
        {"locked", lock("PRAGMA journal_mode = DELETE; BEGIN EXCLUSIVE"), false, 3, 0, withoutFailed},
        {"locked while open", lock("BEGIN IMMEDIATE"), true, 3, 0, withoutFailed},
        {"another process's", own, false, 3, 0, withoutFailed},
        {"read-only", fail(Fault::ReadOnly), false, 3, 0, withoutFailed},
        {"full", fail(Fault::FailFromThenOn), false, 3, 0, withoutFailed},
        {"full while open", fail(Fault::FailFromThenOn), true, 3, 0, withoutFailed},
        {"missing", remove, false, 0, 0, madeAnew},
        {"its folder is missing", removeAll, false, 0, 0, madeAnew},
        {"vanished while open", remove, true, 0, 4, madeAnew},
        {"its folder vanished while open", removeAll, true, 0, 4, madeAnew},
        {"garbage", garbage, false, 0, 0, madeAnew},
        {"an index is damaged", damageIndex, false, 0, 0, madeAnew},
        {"damaged while open", damage, true, 1, 4, fromTo(5, 9)},
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
        log(engine.analytics(), 4, 3);
        engine.time.runUntilIdle();
        CHECK(engine.count(LedgerEntry::Failed) == row.failed);
        CHECK(engine.tally().underWay() == 0);

        fileFaults::plan(Fault::None);
        other.reset();
        owner.reset();
        engine.time.advance(61s);
        log(engine.analytics(), 7, 3);
        engine.time.runUntilIdle();
        CHECK(engine.count(LedgerEntry::Failed) == row.failed);
        CHECK(engine.count(LedgerEntry::Lost) == row.lost);
        CHECK(engine.balance() == "balanced");
        CHECK(numbers(engine) == row.stored);
    }
}

TEST_CASE("while the database hangs every call returns, and the end comes in time")
{
    EngineInFolder things;
    AsioQueues queues;
    std::latch answers{1};
    std::promise<void> hangs;
    const auto host = things.makeHost(queues, [&](const std::filesystem::path &) -> Result<> {
        hangs.set_value();
        answers.wait();
        return {};
    });
    APMAnalytics &analytics = host->analytics();
    log(analytics, 1, 3);
    host->start();
    REQUIRE(hangs.get_future().wait_for(deadline) == std::future_status::ready);
    // What waited for anything would wait for ever here.
    log(analytics, 4, 100);
    analytics.setUserID(std::string("u"));
    analytics.resetAnalyticsData();
    const auto main = queues.makeSerialQueue("main");
    std::promise<void> closed;
    host->close(*main, [&closed] { closed.set_value(); });
    REQUIRE(closed.get_future().wait_for(deadline) == std::future_status::ready);
    log(analytics, 104, 1);
    answers.count_down();
    queues.close();
    const EventTally tally = host->ledger().tally();
    CHECK(tally.count(LedgerEntry::Accepted) == 104);
    CHECK(tally.count(LedgerEntry::Abandoned) > 0);
    CHECK(tally.balance({.waitingRows = things.rows()}));
}

TEST_CASE("at the end what was accepted is stored or counted, and the end is told once")
{
    struct Row {
        const char *what;
        bool isStarted;
        std::chrono::milliseconds atMost;
        std::int64_t rows; ///< with that of the first open
        std::uint64_t abandoned;
    };
    for (const Row &row : {Row{"in time", true, 250ms, 3, 1}, Row{"given up", true, 0ms, 1, 3},
                           Row{"before the start", false, 250ms, 0, 3}}) {
        CAPTURE(row.what);
        EngineInFolder engine;
        APMAnalytics &analytics = row.isStarted ? engine.start() : engine.launch();
        log(analytics, 1, 2);
        int reports = 0;
        for (int time = 0; time < 2; ++time)
            analytics.close(engine.time.mainQueue(), row.atMost, [&] {
                CHECK(engine.time.mainQueue().isCurrent());
                ++reports;
            });
        log(analytics, 3, 1);
        analytics.sessionIDWithCompletion([](const auto &session) { CHECK_FALSE(session); });
        engine.time.runUntilIdle();
        CHECK(reports == 1);
        engine.time.advance(5s);
        CHECK(reports == 1);
        if (!row.isStarted)
            engine.start();
        CHECK(engine.rows() == row.rows);
        CHECK(engine.count(LedgerEntry::Abandoned) == row.abandoned);
        CHECK(engine.balance() == "balanced");
        CHECK(std::filesystem::exists(engine.file) == row.isStarted);
        CHECK((!row.isStarted || OwnerLock::acquire(engine.file))); // nobody owns the database any more
    }
}

// A whole run for each call that fails takes long under a sanitizer: there some of them have to do.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long callsBetweenFaults = 7;
#else
constexpr long callsBetweenFaults = 1;
#endif

TEST_CASE("whatever call to the files fails, the next run has a sound file, and tells of every event")
{
    for (const Fault fault : {Fault::FailOnce, Fault::FailFromThenOn}) {
        long calls = 1;
        for (long at = 0; at <= calls; at += callsBetweenFaults * (fault == Fault::FailOnce ? 1 : 5)) {
            CAPTURE(int(fault));
            CAPTURE(at);
            UpgradedEngine engine;
            fileFaults::plan(fault, at);
            engine.live([](Told) {});
            CHECK(engine.tally().balance({.waitingRows = engine.tally().waitingRows()}));
            CHECK(engine.end());
            if (at == 0)
                calls = fileFaults::calls();
            fileFaults::plan(Fault::None);
            log(engine.start(), 1000, 1);
            engine.time.runUntilIdle();
            engine.checkIsSound();
            CHECK(numbers(engine).back() == 1000);
        }
        CHECK(calls > 50);
    }
}

TEST_CASE("killed at any change to its files, it keeps every event that was committed, once")
{
    const auto run = [](long at) {
        UpgradedEngine engine;
        int ends[2]{};
        REQUIRE(pipe(ends) == 0);
        const pid_t child = fork();
        if (child == 0) {
            fileFaults::plan(Fault::KillAtChange, at);
            bool isTold = true;
            engine.live(
                [&](Told told) { isTold = isTold && write(ends[1], &told, sizeof told) == sizeof told; });
            _exit(isTold ? 0 : 1);
        }
        close(ends[1]);
        Told told;
        while (read(ends[0], &told, sizeof told) == sizeof told)
            ;
        close(ends[0]);
        int status = 0;
        REQUIRE(waitpid(child, &status, 0) == child);
        CHECK(WIFSIGNALED(status) == (at > 0));
        engine.start();
        engine.checkIsSound();
        const auto stored = numbers(engine);
        const std::int64_t last = stored.empty() ? 0 : stored.back();
        CHECK(last >= told.lastKept);
        CHECK(stored == fromTo(last - std::int64_t(stored.size()) + 1, last));
        return told.changes;
    };
    const long changes = run(0);
    CHECK(changes > 50);
    for (long at = 1; at <= changes; ++at) {
        CAPTURE(at);
        run(at);
    }
}
