// What the whole engine does where its database is not as it should be, hangs, or the process is killed.

#include "platform/base/AsioQueues.h"
#include "platform/base/Files.h"
#include "tests/analytics/DatabaseFixture.h"
#include "tests/analytics/RandomCalls.h"
#include "tests/fakes/EngineInFolder.h"
#include "tests/fakes/FileFaults.h"

#include <doctest/doctest.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <csignal>
#include <fstream>
#include <future>
#include <latch>
#include <numeric>
#include <thread>

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

/// An engine with little room, on a file of an older version.
struct UpgradedEngine : EngineInFolder {
    UpgradedEngine() : EngineInFolder({{"measurement.store.max_stored_events_per_app", std::int64_t{25}}})
    {
        std::filesystem::create_directories(file.parent_path());
        REQUIRE((*Database::open(file, OpenMode::Write, 0s))->execute(olderVersion));
    }

    /// Everything that changes the file, in transactions of different sizes.
    /// @param tell  up to which number events are kept
    void live(const std::function<void(std::int64_t)> &tell)
    {
        start();
        std::int64_t last = 0;
        const auto logAndTell = [&](std::int64_t more) {
            log(analytics(), last + 1, more);
            analytics().setUserPropertyString(std::to_string(more), "p");
            time.runUntilIdle();
            tell(last += more);
        };
        for (const std::int64_t more : {1, 6, 2, 9, 3, 12})
            logAndTell(more);
        tell(0); // what was stored may go now
        analytics().resetAnalyticsData();
        logAndTell(3);
        tell(0);
        time.advance(std::chrono::hours(24 * 29));
        logAndTell(2);
    }
    void checkIsSound() const
    {
        CHECK(balance() == "balanced");
        CHECK(count(LedgerEntry::Found) == 2); // of the older version
        CHECK(count(LedgerEntry::Lost) == 0);
        CHECK(status()->integrity == "ok");
        CHECK(status()->ledger == tally());
    }
};

} // namespace

TEST_CASE("whatever is wrong with its database, events go on, and are stored again once it can be used")
{
    std::shared_ptr<void> other; // who holds the file
    const auto own = [&other](const EngineInFolder &engine) {
        other = std::make_shared<OwnerLock>(*OwnerLock::acquire(engine.file));
    };
    const auto lock = [&other](const char *how) {
        return [&other, how](const EngineInFolder &engine) {
            std::shared_ptr<Database> database = *Database::open(engine.file, OpenMode::Write, 0s);
            REQUIRE(database->execute(how));
            other = std::move(database);
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
    const auto withoutFailed = std::vector<std::int64_t>{1, 2, 3, 7, 8, 9};
    const auto madeAnew = fromTo(4, 9);
    const auto remove = [](const EngineInFolder &engine) {
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
        {"vanished while open", remove, true, 0, 4, madeAnew},
        {"garbage", garbage, false, 0, 0, madeAnew},
        {"an index is damaged", damageIndex, false, 0, 0, madeAnew},
        {"damaged while open", damage, true, 1, 4, fromTo(5, 9)},
        {"as it should be", [](const EngineInFolder &) {}, true, 0, 0, fromTo(1, 9)},
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

        fileFaults::plan(Fault::None);
        other.reset();
        engine.time.advance(61s);
        log(engine.analytics(), 7, 3);
        engine.time.runUntilIdle();
        CHECK(engine.count(LedgerEntry::Failed) == row.failed);
        CHECK(engine.count(LedgerEntry::Lost) == row.lost);
        CHECK(engine.balance() == "balanced");
        CHECK(numbers(engine) == row.stored);
    }
}

TEST_CASE("called on many threads and closed while they call, it knows of every event, if the disk hangs too")
{
    for (const bool isHanging : {false, true}) {
        EngineInFolder engine;
        AsioQueues queues;
        std::promise<void> opens;
        std::latch answers{isHanging ? 1 : 0};
        auto host = engine.makeHost(queues, [&](const std::filesystem::path &) -> Result<> {
            opens.set_value();
            answers.wait(); // whoever waits for the database waits for ever
            return {};
        });
        std::vector<RandomCaller> callers{RandomCaller(1), RandomCaller(2), RandomCaller(3)};
        std::vector<std::jthread> threads;
        for (RandomCaller &caller : callers)
            threads.emplace_back([&caller, &host] {
                for (int call = 0; call < 1000; ++call)
                    caller.callOnce(host->analytics());
            });
        host->start();
        CHECK(opens.get_future().wait_for(deadline) == std::future_status::ready);
        while (!isHanging && host->ledger().tally().count(LedgerEntry::Stored) < 100)
            std::this_thread::yield();
        const auto main = queues.makeSerialQueue("main");
        std::promise<void> closed;
        host->close(*main, [&closed] { closed.set_value(); });
        CHECK(closed.get_future().wait_for(deadline) == std::future_status::ready);
        threads.clear(); // each has made its calls
        if (isHanging)
            answers.count_down();
        queues.close();
        const EventTally tally = host->ledger().tally();
        CHECK(tally.count(LedgerEntry::Accepted) ==
              callers[0].logged + callers[1].logged + callers[2].logged);
        const auto balanced = tally.balance({.waitingRows = engine.rows()});
        CHECK_MESSAGE(balanced, balanced.error().message);

        host.reset();
        log(engine.start(), 1, 1); // as the next process finds it
        engine.time.runUntilIdle();
        CHECK(engine.balance() == "balanced");
        CHECK(engine.count(LedgerEntry::Found) + engine.count(LedgerEntry::Lost) == 0);
    }
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
            analytics.close(engine.time.mainQueue(), row.atMost, [&] { ++reports; });
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
            engine.live([](std::int64_t) {});
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
    void *const shared = mmap(nullptr, 8, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    REQUIRE(shared != MAP_FAILED);
    std::int64_t &lastKept = *new (shared) std::int64_t;
    long at = 1;
    for (bool isKilled = true; isKilled; ++at) {
        CAPTURE(at);
        UpgradedEngine engine;
        lastKept = 0;
        const pid_t child = fork();
        if (child == 0) {
            fileFaults::plan(Fault::KillAtChange, at);
            engine.live([&](std::int64_t last) { lastKept = last; });
            _exit(0);
        }
        int status = 0;
        REQUIRE(waitpid(child, &status, 0) == child);
        isKilled = status == SIGKILL;
        CHECK((isKilled || status == 0));
        engine.start();
        engine.checkIsSound();
        const auto stored = numbers(engine);
        const std::int64_t last = stored.empty() ? 0 : stored.back();
        CHECK(last >= lastKept);
        CHECK(stored == fromTo(last - std::int64_t(stored.size()) + 1, last));
    }
    CHECK(at > 50);
    munmap(shared, 8);
}
