#include "platform/base/AsioQueues.h"
#include "platform/sqlite/Database.h"
#include "tests/store/StoreFixture.h"

#include <doctest/doctest.h>

#include <future>
#include <set>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

/// A store that real threads use.
struct ThreadsFixture {
    TemporaryFolder folder;
    VirtualTime clock;
    AsioQueues queues;
    StoreUser user{folder.path(), queues.globalUserInitiated(), clock, 60s};
};

} // namespace

TEST_CASE_FIXTURE(ThreadsFixture, "reading waits for no writer")
{
    user.photos.saveImage(noise(1));
    const auto other = *Database::open(user.persistentContainer().file(), OpenMode::Write, 0ms);
    REQUIRE(other->execute("BEGIN IMMEDIATE; DELETE FROM PhotoEntity"));

    auto save = std::async(std::launch::async, [this] { user.photos.saveImage(noise(2)); });
    while (user.context().insertedObjects().empty() || user.photos.photoCount() < 2)
        std::this_thread::yield(); // until the save is under way, and waits for the other's lock
    const auto both = user.photos.fetchImages(0);
    REQUIRE(both.size() == 2);
    CHECK(pixelsOf(both[0].image) == pixelsOf(noise(2)));
    CHECK(pixelsOf(both[1].image) == pixelsOf(noise(1)));
    CHECK(save.wait_for(0s) == std::future_status::timeout);
    REQUIRE(other->execute("ROLLBACK"));
    save.get();
    CHECK(user.console.lines().empty());
    CHECK(user.uuids() == std::vector{both[0].uuid, both[1].uuid});
}

TEST_CASE_FIXTURE(StoreFixture, "what a thread has not filled yet, no other thread saves")
{
    const auto object = user.context().insertNewObject("PhotoEntity");
    object->setValue("half", "uuid");
    const auto onAnotherThread = [](auto work) { return std::async(std::launch::async, work).get(); };
    onAnotherThread([this] { user.photos.saveImage(noise(1)); });
    CHECK(onAnotherThread([this] { return user.photos.photoCount(); }) == 1);
    CHECK(user.photos.photoCount() == 2);
    CHECK(user.context().insertedObjects().size() == 1);
    object->setValue(1.0, "createdDate");
    CHECK(user.context().save());
    StoreUser other(folder.path(), time);
    const auto rows = other.context().executeFetchRequest(
        {.entityName = "PhotoEntity", .predicate = FetchRequest::Equality{"uuid", "half"}});
    REQUIRE(rows->size() == 1);
    CHECK(rows->front()->valueForKey("createdDate") == AttributeValue(1.0));
}

TEST_CASE_FIXTURE(ThreadsFixture,
                  "photos saved by several threads at once all come, and the count never goes back")
{
    std::vector<std::future<void>> savers;
    for (std::uint32_t saver = 0; saver < 4; ++saver)
        savers.push_back(std::async(std::launch::async, [this, saver] {
            for (std::uint32_t number = 0; number < 12; ++number)
                user.photos.saveImage(noise(saver * 100 + number));
        }));
    std::int64_t count = 0;
    while (count < 48) {
        const auto now = user.photos.photoCount();
        REQUIRE(now >= count);
        REQUIRE(now <= 48);
        count = now;
    }
    for (auto &saver : savers)
        saver.get();
    CHECK(user.takePosts() == 48);
    const auto uuids = user.uuids();
    CHECK(std::set(uuids.begin(), uuids.end()).size() == 48);
    CHECK(user.console.lines().empty());
}

TEST_CASE_FIXTURE(ThreadsFixture, "a record that is fetched while its row is deleted stays whole")
{
    std::atomic<int> seen = 0;
    auto deleter = std::async(std::launch::async, [&] {
        for (std::uint32_t round = 0; round < 30 || (seen == 0 && round < 3000); ++round) {
            for (std::uint32_t number = 0; number < 4; ++number)
                user.photos.saveImage(noise(round, 30));
            user.photos.deletePhoto(user.uuids(1).at(0));
            user.photos.deleteAllPhotos();
        }
    });
    while (deleter.wait_for(0s) != std::future_status::ready) {
        for (const PhotoModel &record : user.photos.fetchImages(0)) {
            const auto pixels = record.image.pixels();
            if (!pixels)
                FAIL_CHECK(pixels.error().description());
            ++seen;
        }
    }
    deleter.get();
    CHECK(seen > 0);
    CHECK(user.console.lines().empty());
    CHECK(user.console.reports().empty());
}
