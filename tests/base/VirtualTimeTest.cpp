#include "tests/fakes/VirtualTime.h"

#include "tests/fakes/AbortsInChild.h"

#include <doctest/doctest.h>

#include <string>

using namespace skyflare;
using namespace std::chrono_literals;

TEST_CASE("virtual time runs work when it is due, in order, and stands still meanwhile")
{
    VirtualTime time(1000);
    const double uptime = time.secondsOfUptime();
    std::string ran;
    const auto note = [&](char name) {
        return [&, name] { ran += name + std::to_string(static_cast<int>(time.secondsSince1970())) + ' '; };
    };
    const auto queue = time.makeSerialQueue("worker");
    queue->asyncAfter(2s, note('c'));
    time.mainQueue().asyncAfter(1s, note('b'));
    queue->async(note('a'));
    queue->asyncAfter(3s, note('d'));
    CHECK(ran.empty());
    time.advance(2s - 1ns);
    CHECK(ran == "a1000 b1001 ");
    time.advance(1ns);
    CHECK(ran == "a1000 b1001 c1002 ");
    CHECK(time.secondsOfUptime() - uptime == 2);

    time.setSecondsSince1970(5000);
    queue->async([&] { queue->async(note('e')); });
    time.runUntilIdle();
    CHECK(ran == "a1000 b1001 c1002 e5000 ");
    CHECK(time.secondsOfUptime() - uptime == 2);
}

TEST_CASE("virtual sync runs what the target had before it, then its work")
{
    VirtualTime time;
    std::string ran;
    SerialQueue &main = time.mainQueue();
    const auto queue = time.makeSerialQueue("worker");
    queue->async([&] { ran += 'o'; }); // another queue's: not drained
    main.async([&] { ran += 'a'; });
    main.asyncAfter(1s, [&] { ran += 't'; });
    time.globalUserInitiated().async([&] {
        CHECK_FALSE(main.isCurrent());
        CHECK(main.sync([&] { ran += main.isCurrent() ? 's' : '?'; }));
    });
    CHECK(time.globalUserInitiated().sync([] {}));
    CHECK(ran == "as");
    CHECK(abortsInChild(
        [&] { return main.sync([&] { return queue->sync([&] { std::ignore = main.sync([] {}); }); }); }));
    time.close(main);
    CHECK_FALSE(main.sync([&] { ran += '?'; }));
    time.advance(1s);
    CHECK(ran == "aso");
}

TEST_CASE("a virtual queue may be let go of by its own work, and its last work still runs")
{
    VirtualTime time;
    int ran = 0;
    auto queue = time.makeSerialQueue("short-lived");
    SerialQueue &borrowed = *queue;
    borrowed.async([own = std::move(queue)]() mutable { own = nullptr; });
    borrowed.async([&] { ++ran; });
    borrowed.asyncAfter(1s, [&] { ran += 100; });
    time.advance(2s);
    CHECK(ran == 1);
}
