#include "platform/base/NotificationCenter.h"

#include <doctest/doctest.h>

#include <atomic>
#include <future>
#include <thread>

using namespace skyflare;

TEST_CASE("blocks of a name run in their order, and may post, observe and end observations, their own too")
{
    NotificationCenter center;
    std::string ran;
    const auto first = center.addObserver("A", [&] { ran += '1'; });
    const auto other = center.addObserver("B", [&] { ran += 'b'; });
    NotificationCenter::Observation self;
    NotificationCenter::Observation later;
    NotificationCenter::Observation added;
    self = center.addObserver("A", [&] {
        ran += '(';
        if (ran.size() < 5)
            center.postNotificationName("A");
        later = {};
        self = {};
        added = center.addObserver("A", [&] { ran += 'n'; });
        ran += ')';
    });
    later = center.addObserver("A", [&] { ran += 'l'; });
    center.postNotificationName("A");
    CHECK(ran == "1(1(1()))"); // `later` is ended before its turn, `added` comes too late for this post
    center.postNotificationName("A");
    CHECK(ran == "1(1(1()))1n");
}

TEST_CASE("the end of an observation waits for a block that runs on another thread")
{
    NotificationCenter center;
    std::promise<void> entered;
    std::atomic<bool> ending = false;
    bool finished = false; // no atomic: the end of the observation must order it
    auto observation = center.addObserver("A", [&] {
        entered.set_value();
        ending.wait(false);
        for (int turn = 0; turn < 1000; ++turn)
            std::this_thread::yield();
        finished = true;
    });
    const auto posting = std::async(std::launch::async, [&] { center.postNotificationName("A"); });
    entered.get_future().wait();
    ending = true;
    ending.notify_all();
    observation = {};
    CHECK(finished);
}
