#include "capture/StorageWatch.h"
#include "store/PhotoDataManager.h"
#include "tests/fakes/FakeFreeSpace.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>

using namespace skyflare;
using namespace std::chrono_literals;

TEST_CASE("how many photos there is room for follows from the last ones, else from the frames")
{
    StorageRoom room;
    CHECK(room.photosIn(0) == 0);
    CHECK(room.photosIn(3 * 921'600 - 1) == 1); // 640 x 480; one photo is kept back
    CHECK(room.photosIn(3 * 921'600) == 2);
    room.setFrameSize(1920, 1080);
    CHECK(room.photosIn(21 * 6'220'800) == 20);
    room.setFrameSize(0, 0); // a camera that does not say
    CHECK(room.photosIn(21 * 6'220'800) == 20);

    room.photoStored(5'000'000);
    for (int i = 0; i < 7; ++i)
        room.photoStored(1'000'000);
    CHECK(room.photosIn(15'000'000) == 2); // as the largest of eight
    room.photoStored(1'000'000);
    CHECK(room.photosIn(15'000'000) == 14);

    CHECK(storageLevel(room, {}) == StorageLevel::Enough); // nobody can tell
    CHECK(storageLevel(room, 21'000'000) == StorageLevel::Enough);
    CHECK(storageLevel(room, 20'999'999) == StorageLevel::Low);
    CHECK(storageLevel(room, 3'000'000) == StorageLevel::Low);
    CHECK(storageLevel(room, 2'999'999) == StorageLevel::Full);
}

TEST_CASE("the room is watched during a run, and otherwise only when there is a reason")
{
    VirtualTime time;
    NotificationCenter notifications;
    FakeFreeSpace disk;
    StorageRoom room;
    room.photoStored(1'000'000);
    const auto watch = std::make_shared<StorageWatch>(
        StorageWatch::Services{time.mainQueue(), time, notifications, disk, room, "/photos"});
    std::vector<StorageLevel> levels;
    watch->begin([&](StorageLevel level) { levels.push_back(level); });
    CHECK(disk.looks == 0); // not on main
    time.runUntilIdle();
    CHECK(disk.lookedAt == "/photos");
    CHECK(time.pendingTimers() == 0);

    const auto advanceTo = [&](std::optional<std::uint64_t> bytes) {
        disk.bytes = bytes;
        time.advance(5s);
        return levels;
    };
    using Levels = std::vector<StorageLevel>;
    watch->runBegins();
    time.runUntilIdle();
    const int looks = disk.looks;
    CHECK(advanceTo(21'000'000).empty());
    CHECK(disk.looks == looks + 1);
    CHECK(advanceTo(20'000'000) == Levels{StorageLevel::Low});
    CHECK(advanceTo(19'000'000) == Levels{StorageLevel::Low}); // said once
    CHECK(advanceTo({}) == Levels{StorageLevel::Low, StorageLevel::Enough});
    levels.clear();
    CHECK(advanceTo(2'000'000) == Levels{StorageLevel::Full});
    watch->runEnds();
    CHECK(advanceTo(90'000'000) == Levels{StorageLevel::Full, StorageLevel::Enough});
    time.advance(5s);
    CHECK(time.pendingTimers() == 0);

    disk.bytes = 0;
    notifications.postNotificationName(countDidChange);
    notifications.postNotificationName(countDidChange); // while it looks: it looks once more
    disk.looks = 0;
    time.runUntilIdle();
    CHECK(watch->level() == StorageLevel::Full);
    CHECK(disk.looks == 2);
}
