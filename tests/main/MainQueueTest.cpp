#include "app/MainQueue.h"

#include <doctest/doctest.h>

#include <QCoreApplication>
#include <future>
#include <thread>
#include <vector>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

/// Serves the event loop until `isDone`; for ever if that never comes.
template <typename Condition> void serveUntil(const Condition &isDone)
{
    while (!isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
}

} // namespace

TEST_CASE("the main queue runs what it was given on main, in order, and timers when they are due")
{
    MainQueue queue;
    std::vector<int> order;
    std::vector<int> timers; // they may be due before the other thread has begun
    CHECK(queue.isCurrent());
    queue.asyncAfter(20ms, [&] { timers.push_back(1); });
    std::thread other([&] {
        CHECK_FALSE(queue.isCurrent());
        queue.async([&] { order.push_back(1); });
        CHECK(queue.sync([&] {
            CHECK(queue.isCurrent());
            order.push_back(2);
            queue.async([&] { order.push_back(3); });
        }));
        queue.asyncAfter(40ms, [&] { timers.push_back(2); });
    });
    serveUntil([&] { return order.size() + timers.size() == 5; });
    other.join();
    CHECK(order == std::vector{1, 2, 3});
    CHECK(timers == std::vector{1, 2});
}

TEST_CASE("closing the main queue sends home who waits, and drops what comes later")
{
    MainQueue queue;
    bool ran = false;
    std::promise<void> asked;
    auto outcome = std::async(std::launch::async, [&] {
        asked.set_value();
        return queue.sync([&] { ran = true; });
    });
    asked.get_future().wait();
    queue.asyncAfter(0ms, [&] { ran = true; });
    queue.close();
    CHECK_FALSE(outcome.get());
    queue.async([&] { ran = true; });
    QCoreApplication::processEvents();
    CHECK_FALSE(ran);
}
