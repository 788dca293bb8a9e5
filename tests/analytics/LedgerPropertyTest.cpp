// Random calls, faults and ends: whatever happens, the ledger tells what became of every event.

#include "platform/base/AsioQueues.h"
#include "tests/fakes/EngineInFolder.h"
#include "tests/fakes/FileFaults.h"

#include <doctest/doctest.h>
#include <fcntl.h>
#include <sys/wait.h>

#include <csignal>
#include <future>
#include <limits>
#include <random>
#include <thread>

using namespace skyflare;

namespace {

using Fault = fileFaults::Kind;

/// Calls of every kind, good and bad.
class RandomCaller {
public:
    explicit RandomCaller(std::uint64_t seed) : random_(seed) {}

    std::uint64_t logged = 0; ///< events, since it was set last

    std::size_t below(std::size_t limit) { return random_() % limit; }
    bool isOne(std::size_t in) { return below(in) == 0; }
    template <typename T> const T &oneOf(const std::vector<T> &all) { return all[below(all.size())]; }

    void callOnce(APMAnalytics &analytics);

private:
    std::mt19937_64 random_;

    std::optional<std::string> name()
    {
        static const std::vector<std::optional<std::string>> names{{},
                                                                   "",
                                                                   "_x",
                                                                   "first_open",
                                                                   "screen_view",
                                                                   "extend_session",
                                                                   "mipeme_a",
                                                                   std::string(41, 'a'),
                                                                   "a b",
                                                                   "\xff\xfe",
                                                                   "_sid"};
        return isOne(3) ? oneOf(names) : std::string(1, char('a' + below(26)));
    }
    PropertyList value(int depth = 0)
    {
        static const std::vector<PropertyList> plain{std::int64_t{7},
                                                     std::numeric_limits<double>::quiet_NaN(),
                                                     0.5,
                                                     Bytes(3),
                                                     std::string("\xc3("),
                                                     std::string("v"),
                                                     std::string(600, 'v')};
        if (depth > 1 || !isOne(4))
            return oneOf(plain);
        const auto inner = parameters(depth + 1);
        return isOne(2) ? PropertyList(inner) : PropertyList(PropertyList::Array(below(4), inner));
    }
    PropertyList::Dictionary parameters(int depth = 0)
    {
        PropertyList::Dictionary result;
        for (std::size_t count = below(6); count > 0; --count)
            result.insert_or_assign(isOne(6) ? "items" : name().value_or("p"), value(depth));
        return result;
    }
    void logEvent(APMAnalytics &analytics);
    void changeUser(APMAnalytics &analytics);
    void useApp(APMAnalytics &analytics);
};

void RandomCaller::logEvent(APMAnalytics &analytics)
{
    static const std::vector<std::string> origins{
        "app", "auto", "fa", "b+gtm", "", "o o", std::string(33, 'o')};
    ++logged;
    if (isOne(2))
        return analytics.logEventWithName(isOne(9) ? "purchase" : name(), parameters());
    APMAnalytics::EventOptions options;
    options.isPublicEvent = isOne(2) ? IsPublicEvent::Yes : IsPublicEvent::No;
    options.ignoreEnabled = isOne(2);
    options.ignoreInterceptor = isOne(2);
    if (isOne(3)) // most of them stale
        options.timestamp = VirtualTime::defaultSecondsSince1970 + 1e6 * (double(below(13)) - 6);
    analytics.logEventWithOrigin(oneOf(origins), name(), parameters(), options);
}

void RandomCaller::changeUser(APMAnalytics &analytics)
{
    const auto given = isOne(3) ? std::nullopt : std::optional(value(2));
    if (isOne(5))
        return analytics.setUserID(given);
    if (isOne(3))
        return analytics.setInternalUserProperty(given, name(), isOne(2) ? "auto" : "no origin");
    analytics.setUserPropertyString(given, isOne(9) ? "allow_personalized_ads" : name());
}

void RandomCaller::useApp(APMAnalytics &analytics)
{
    if (isOne(3))
        return analytics.applicationWillResignActive();
    if (isOne(2))
        return analytics.applicationDidBecomeActive();
    if (isOne(2))
        return analytics.setScreenName(name(), name());
    analytics.viewDidAppear(name().value_or(""), below(3));
}

void RandomCaller::callOnce(APMAnalytics &analytics)
{
    const std::size_t kind = below(40);
    if (kind < 28)
        logEvent(analytics);
    else if (kind < 31)
        changeUser(analytics);
    else if (kind < 34)
        useApp(analytics);
    else if (kind < 36)
        analytics.setAnalyticsCollectionEnabled(!isOne(4));
    else if (kind == 36)
        analytics.setDefaultEventParameters(isOne(2) ? std::nullopt : std::optional(parameters()));
    else if (kind == 37)
        analytics.setSessionTimeoutInterval(double(below(9)) - 2);
    else if (kind == 38)
        analytics.setLogEventInterceptor([](const APMEvent &) {});
    else
        analytics.addLogEventListener([](const APMEvent &) {});
}

/// One that always comes to the database.
void logProbe(APMAnalytics &analytics)
{
    analytics.logEventWithOrigin("auto", "_probe", {},
                                 {.isPublicEvent = IsPublicEvent::No, .ignoreEnabled = true});
}

/// Small limits, so that all of them are reached.
PropertyList::Dictionary randomSettings(RandomCaller &random)
{
    const auto one = [&](std::vector<std::int64_t> of) { return PropertyList(random.oneOf(of)); };
    return {{"measurement.upload.max_events_per_day", one({0, 40, 100'000})},
            {"measurement.upload.max_public_events_per_day", one({3, 20, 100'000})},
            {"measurement.upload.max_error_events_per_day", one({0, 5, 100'000})},
            {"measurement.store.max_stored_events_per_app", one({0, 1, 10, 100'000})}};
}

/// An engine that lives through random calls and faults.
class Life {
public:
    explicit Life(std::uint64_t seed) : random_(seed), engine_(randomSettings(random_)) { begin(); }

    void step();
    /// All faults have gone, and a minute later all is as it should be, on the disk too.
    void recover();

private:
    RandomCaller random_;
    EngineInFolder engine_;
    std::unique_ptr<Database> other_;       ///< holds a lock
    std::optional<std::uint64_t> accepted_; ///< by those before this process; nothing: not known
    bool isSound_ = false; ///< the engine has the file open, and nothing has happened to that

    void begin()
    {
        random_.logged = 0;
        isSound_ = false;
        APMAnalytics &analytics = engine_.launch();
        while (!random_.isOne(3))
            random_.callOnce(analytics);
        CHECK(engine_.tally().balance({.eventsUnderWay = std::int64_t(random_.logged)}));
        engine_.start();
    }
    void beginAgain();
    void beKilled();
    void damageFile() const;
    void startFault();
    void check();
};

void Life::check()
{
    engine_.time.runUntilIdle();
    const EventTally tally = engine_.tally();
    const auto rows = isSound_ ? engine_.rows() : tally.waitingRows();
    CHECK(rows >= 0);
    const auto balanced = tally.balance({.waitingRows = rows});
    CHECK_MESSAGE(balanced, balanced.error().message);
    if (!isSound_)
        return;
    if (!accepted_)
        accepted_ = tally.count(LedgerEntry::Accepted) - random_.logged;
    CHECK(tally.count(LedgerEntry::Accepted) == *accepted_ + random_.logged);
}

void Life::recover()
{
    fileFaults::plan(Fault::None);
    other_.reset();
    engine_.time.runUntilIdle();
    engine_.time.advance(std::chrono::seconds(61));
    ++random_.logged;
    logProbe(engine_.analytics());
    isSound_ = true;
    check();
    const auto onDisk = engine_.status();
    REQUIRE(onDisk);
    CHECK(onDisk->integrity == "ok");
    CHECK(onDisk->ledger == engine_.tally());
}

void Life::damageFile() const
{
    const int file = open(engine_.file.c_str(), O_WRONLY | O_CLOEXEC);
    const std::string garbage(5000, 'x');
    REQUIRE(pwrite(file, garbage.data(), garbage.size(), random_.logged % 2 == 0 ? 0 : 4096) == 5000);
    close(file);
}

/// As the next process, in which some call to the files may fail.
void Life::beginAgain()
{
    CHECK(engine_.end());
    fileFaults::plan(Fault::None);
    other_.reset();
    const auto before = engine_.status();
    accepted_ = before ? before->ledger.count(LedgerEntry::Accepted) : 0;
    if (random_.isOne(4)) {
        accepted_ = 0;
        if (before && random_.isOne(2))
            damageFile();
        else
            std::filesystem::remove(engine_.file);
    }
    const bool isFaulty = random_.isOne(3);
    if (isFaulty)
        startFault();
    if (!std::filesystem::exists(engine_.file))
        accepted_ = 0;
    begin();
    if (!isFaulty)
        recover();
}

/// By SIGKILL, in the middle of a change to a file or between two.
void Life::beKilled()
{
    CHECK(engine_.end());
    fileFaults::plan(Fault::None);
    other_.reset();
    const auto at = long(random_.below(150));
    const pid_t child = fork();
    if (child == 0) {
        fileFaults::plan(Fault::KillAtChange, at);
        APMAnalytics &analytics = engine_.start();
        for (int call = 0; call < 60; ++call) {
            random_.callOnce(analytics);
            if (random_.isOne(4))
                engine_.time.runUntilIdle();
        }
        std::raise(SIGKILL);
    }
    int status = 0;
    REQUIRE(waitpid(child, &status, 0) == child);
    REQUIRE(WIFSIGNALED(status));
    CHECK(WTERMSIG(status) == SIGKILL);
    accepted_.reset();
    begin();
    recover();
}

void Life::startFault()
{
    const bool wasSound = std::exchange(isSound_, false);
    switch (random_.below(5)) {
    case 0:
        return fileFaults::plan(Fault::FailOnce, 1 + long(random_.below(60)));
    case 1:
        return fileFaults::plan(Fault::FailFromThenOn, 1 + long(random_.below(60)));
    case 2:
        return fileFaults::plan(Fault::ReadOnly);
    case 3:
        if (!wasSound)
            accepted_.reset(); // the engine may not have read what it said
        std::filesystem::remove(engine_.file);
        return;
    default:
        if (auto other = Database::open(engine_.file, OpenMode::Write, std::chrono::seconds(0))) {
            other_ = std::move(*other);
            (void)other_->execute("BEGIN IMMEDIATE");
        }
    }
}

void Life::step()
{
    const std::size_t kind = random_.below(40);
    if (kind == 0)
        beginAgain();
    else if (kind == 1)
        beKilled();
    else if (kind == 2)
        startFault();
    else if (kind == 3)
        engine_.analytics().resetAnalyticsData();
    else if (kind == 4)
        engine_.time.advance(std::chrono::hours(random_.below(24 * 20)));
    else if (kind < 8)
        recover();
    else
        for (std::size_t calls = random_.below(12); calls > 0; --calls)
            random_.callOnce(engine_.analytics());
    check();
}

} // namespace

TEST_CASE("whatever is called and whatever fails, the ledger balances")
{
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        CAPTURE(seed);
        Life life(seed);
        for (int step = 0; step < 60; ++step) {
            CAPTURE(step);
            life.step();
        }
        life.recover();
    }
}

TEST_CASE("called on many threads and closed while they call, it knows of every event")
{
    for (const auto atMost : {std::chrono::seconds(60), std::chrono::seconds(0)}) {
        EngineInFolder engine;
        AsioQueues queues;
        const auto main = queues.makeSerialQueue("main");
        auto host = engine.makeHost(queues);
        std::vector<RandomCaller> callers{RandomCaller(1), RandomCaller(2), RandomCaller(3)};
        std::vector<std::thread> threads;
        for (RandomCaller &caller : callers)
            threads.emplace_back([&caller, &host] {
                for (int call = 0; call < 1000; ++call)
                    caller.callOnce(host->analytics());
            });
        host->start();
        while (host->ledger().tally().count(LedgerEntry::Stored) < 100)
            std::this_thread::yield();
        std::promise<void> closed;
        host->analytics().close(*main, atMost, [&closed] { closed.set_value(); });
        for (std::thread &thread : threads)
            thread.join();
        closed.get_future().wait();
        queues.close();
        const std::uint64_t logged = callers[0].logged + callers[1].logged + callers[2].logged;
        const EventTally tally = host->ledger().tally();
        CHECK(tally.count(LedgerEntry::Accepted) == logged);
        const auto balanced = tally.balance({.waitingRows = engine.rows()});
        CHECK_MESSAGE(balanced, balanced.error().message);

        host.reset();
        logProbe(engine.start()); // as the next process finds it
        engine.time.runUntilIdle();
        CHECK(engine.balance() == "balanced");
        CHECK(engine.count(LedgerEntry::Found) + engine.count(LedgerEntry::Lost) == 0);
    }
}
