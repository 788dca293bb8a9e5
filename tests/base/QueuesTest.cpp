#include "platform/base/AsioQueues.h"
#include "platform/base/MainLoop.h"
#include "tests/fakes/AbortsInChild.h"

#include <doctest/doctest.h>

#include <atomic>
#include <future>
#include <numeric>
#include <semaphore>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

/// Something that one thread does and another waits for.
struct Signal : std::binary_semaphore {
    Signal() : std::binary_semaphore(0) {}
    [[nodiscard]] bool comes() { return try_acquire_for(60s); }
};

struct WorkerFixture {
    AsioQueues queues;
    std::shared_ptr<SerialQueue> queue = queues.makeSerialQueue("worker");
};

} // namespace

TEST_CASE_FIXTURE(WorkerFixture, "a serial queue runs one thing at a time, in order, on its own thread")
{
    std::vector<int> ran; // no lock: the queue must order it
    for (int number = 0; number < 1000; ++number)
        queue->async([&, number] { ran.push_back(queue->isCurrent() ? number : -1); });
    CHECK(queue->sync([&] { ran.push_back(1000); }));
    std::vector<int> expected(1001);
    std::iota(expected.begin(), expected.end(), 0);
    CHECK(ran == expected);
    CHECK_FALSE(queue->isCurrent());
    CHECK(queue->label() == "worker");
}

TEST_CASE("waiting for oneself and running on the wrong queue abort")
{
    CHECK(abortsInChild([] {
        AsioQueues queues;
        const auto queue = queues.makeSerialQueue("worker");
        return queue->sync([&] { std::ignore = queue->sync([] {}); });
    }));
    CHECK(abortsInChild([] { return MainLoop().sync([] {}); }));
    CHECK(abortsInChild([] { assertOn(*AsioQueues().makeSerialQueue("worker")); }));
    CHECK_FALSE(abortsInChild([] { assertOn(MainLoop()); }));
}

TEST_CASE("a serial queue that is let go of by its own work runs what it had accepted")
{
    AsioQueues queues;
    Signal go;
    Signal ran;
    auto queue = queues.makeSerialQueue("short-lived");
    SerialQueue &borrowed = *queue;
    borrowed.async([&, own = std::move(queue)]() mutable {
        CHECK(go.comes());
        own = nullptr;
    });
    borrowed.async([&] { ran.release(); });
    go.release();
    CHECK(ran.comes());
}

TEST_CASE_FIXTURE(WorkerFixture, "who waits in sync goes home with false when the queue closes")
{
    MainLoop mainLoop;
    Signal waiting;
    std::promise<bool> answer;
    std::string ran;
    mainLoop.async([&] {
        queue->async([&] {
            waiting.release();
            answer.set_value(mainLoop.sync([&] { ran += "waiting"; }));
        });
        mainLoop.async([&] { ran += "accepted"; });
        CHECK(waiting.comes());
        mainLoop.quit();
    });
    mainLoop.run();
    CHECK_FALSE(answer.get_future().get());
    CHECK(ran == "accepted");
}

TEST_CASE_FIXTURE(WorkerFixture, "a closed queue drops what it is given")
{
    std::atomic<int> ran = 0;
    queue->async([&] { ++ran; });
    queue->asyncAfter(24h, [&] { ran += 100; }); // would keep close() waiting for a day
    queues.globalUserInitiated().asyncAfter(24h, [&] { ran += 100; });
    queues.close();
    CHECK(ran == 1);
    for (const auto &closed : {queue, queues.makeSerialQueue("born closed")}) {
        CHECK_FALSE(closed->sync([&] { ++ran; }));
        closed->async([&] { ++ran; });
        closed->asyncAfter(0s, [&] { ++ran; });
    }
    CHECK_FALSE(queues.globalUserInitiated().sync([&] { ++ran; }));
    CHECK(ran == 1);
}

TEST_CASE("the global queue runs side by side and can be drained")
{
    AsioQueues queues;
    DispatchQueue &global = queues.globalUserInitiated();
    Signal first;
    Signal second;
    global.async([&] {
        first.release();
        CHECK(second.comes());
    });
    global.async([&] {
        CHECK(first.comes());
        second.release();
    });
    std::atomic<int> ran = 0;
    for (int number = 0; number < 100; ++number)
        global.async([&] { global.async([&] { ++ran; }); });
    queues.drainGlobal();
    CHECK(ran == 100);
}

TEST_CASE_FIXTURE(WorkerFixture, "a shutdown runs all that was accepted, while main goes on serving")
{
    MainLoop mainLoop;
    int fed = 0;
    const std::function<void()> feed = [&] { // itself: one after the other, while all is closed
        if (++fed < 1000)
            queues.globalUserInitiated().async(feed);
    };
    std::vector<int> ran;
    mainLoop.async([&] {
        queue->async([&] {
            CHECK(mainLoop.sync([&] { ran.push_back(1); }));
            queues.globalUserInitiated().async([&] {
                CHECK(mainLoop.sync([&] { ran.push_back(2); }));
                mainLoop.async([&] { ran.push_back(3); });
                queues.globalUserInitiated().async(feed);
            });
        });
        queues.closeThen([&] { mainLoop.quit(); });
    });
    mainLoop.run();
    CHECK(ran == std::vector{1, 2, 3});
    CHECK(fed == 1000);
}
