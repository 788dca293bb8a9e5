#include "platform/base/AsioQueues.h"
#include "platform/linux/SystemClock.h"
#include "tests/analytics/EngineFixture.h"

#include <future>
#include <latch>
#include <thread>

namespace skyflare {

namespace {

using FIR = FIRAnalytics;
using Entry = LedgerEntry;
using Texts = EngineFixture::Texts;

class SilentMonitor final : public APMMonitor {
public:
    [[nodiscard]] bool isLogging(Level) const override { return false; }
    void log(Level, int, std::string_view) override {}
};

} // namespace

TEST_CASE_FIXTURE(EngineFixture,
                  "at the end what was accepted is stored or counted, and the end is told once")
{
    int reports = 0;
    const auto close = [&](std::chrono::milliseconds atMost) {
        internal().close(time.mainQueue(), atMost, [&] {
            CHECK(time.mainQueue().isCurrent());
            ++reports;
        });
    };
    const auto callAndClose = [&](std::chrono::milliseconds atMost) {
        FIR::logEventWithName("e");
        FIR::setUserID({});
        FIR::logEventWithName("e");
        close(atMost);
        close(atMost);
        FIR::logEventWithName("late");
        FIR::sessionIDWithCompletion([](const auto &session) { CHECK_FALSE(session); });
        time.runUntilIdle();
        CHECK(reports == 1);
        time.advance(std::chrono::seconds(5));
        CHECK(reports == 1);
    };
    SUBCASE("in time")
    {
        start();
        callAndClose(std::chrono::milliseconds(250));
        CHECK(takeStored() == Texts{"auto:_f", "e", "e"});
        CHECK(count(Entry::Abandoned) == 1);
        CHECK(OwnerLock::acquire(file)); // nobody owns the database any more
    }
    SUBCASE("given up")
    {
        start();
        callAndClose(std::chrono::milliseconds(0));
        CHECK(takeStored() == Texts{"auto:_f"});
        CHECK(count(Entry::Abandoned) == 3);
        CHECK(OwnerLock::acquire(file));
    }
    SUBCASE("before the start")
    {
        launch();
        callAndClose(std::chrono::milliseconds(250));
        FIR::startWithConfiguration(options);
        time.runUntilIdle();
        CHECK(count(Entry::Abandoned) == 3);
        CHECK_FALSE(std::filesystem::exists(file));
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "on real threads every accepted event is stored or counted, whenever the end comes")
{
    constexpr int callerCount = 3;
    constexpr int each = 2000;
    bool isGivenUp = false;
    SUBCASE("in time") {}
    SUBCASE("given up")
    {
        isGivenUp = true;
    }

    AsioQueues queues;
    SilentMonitor silent;
    SystemClock clock;
    const auto main = queues.makeSerialQueue("main");
    EngineProcess engine({folder.path(), queues, clock, silent, console, random, {}});
    std::latch isHeld(1);
    std::latch isReleased(1);
    if (isGivenUp)
        engine.analytics.addLogEventListener([&, isFirst = true](const APMEvent &) mutable {
            if (std::exchange(isFirst, false))
                isHeld.count_down();
            isReleased.wait();
        });
    std::latch isHalfDone(callerCount);
    std::vector<std::thread> callers;
    callers.reserve(callerCount);
    for (int caller = 0; caller < callerCount; ++caller)
        callers.emplace_back([&] {
            for (int number = 0; number < each; ++number) {
                engine.analytics.logEventWithName("e", {{"n", std::int64_t{number}}, {"_bad", true}});
                engine.analytics.setUserID(text(std::to_string(number / 500)));
                if (number == each / 2)
                    isHalfDone.count_down();
            }
        });
    engine.analytics.startWithConfiguration({});
    isHalfDone.wait();
    std::promise<void> closed;
    const std::chrono::nanoseconds atMost = std::chrono::milliseconds(isGivenUp ? 1 : 600'000);
    if (isGivenUp)
        isHeld.wait();
    CHECK(main->sync([&] { engine.analytics.close(*main, atMost, [&] { closed.set_value(); }); }));
    CHECK(closed.get_future().wait_for(std::chrono::minutes(5)) == std::future_status::ready);
    isReleased.count_down();
    for (std::thread &caller : callers)
        caller.join();
    queues.close();

    const EventTally tally = engine.ledger.tally();
    const auto rows = stored().size();
    CHECK(tally.balance(0, rows));
    CHECK(tally.count(Entry::Accepted) == 6000);
    CHECK(tally.count(Entry::Stored) + tally.count(Entry::Abandoned) == 6001); // with the first open
    CHECK(rows > 1);
    if (isGivenUp)
        CHECK(tally.count(Entry::Abandoned) > 2000);
    else
        CHECK(tally.count(Entry::Stored) > 3000);
}

} // namespace skyflare
