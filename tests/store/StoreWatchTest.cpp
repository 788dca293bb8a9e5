#include "store/StoreWatch.h"

#include "platform/base/AsioQueues.h"
#include "platform/linux/FileWatch.h"
#include "platform/linux/SystemClock.h"
#include "tests/fakes/ChildProcess.h"
#include "tests/store/StoreFixture.h"

#include <doctest/doctest.h>

#include <fstream>
#include <future>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

struct WatchedStore : StoreFixture {
    std::shared_ptr<StoreWatch> watch =
        std::make_shared<StoreWatch>(StoreWatch::Services{user, user.center, time.globalUserInitiated()});
    StoreUser other{folder.path(), time};

    /// How often this process hears of it when the file has been written to, until all is quiet.
    int heard()
    {
        for (int write = 0; write < 5; ++write)
            watch->fileChanged();
        time.advance(10s);
        return user.takePosts();
    }
};

} // namespace

TEST_CASE_FIXTURE(WatchedStore,
                  "what others do to the photos is told once; what this process does is told already")
{
    other.photos.saveImage(noise(1));
    other.photos.saveImage(noise(2));
    CHECK(heard() == 1);
    CHECK(user.photos.photoCount() == 2);
    CHECK(heard() == 0);

    user.photos.saveImage(noise(3)); // one post of its own each
    CHECK(heard() == 1);
    user.photos.deletePhoto(user.uuids().at(0));
    CHECK(heard() == 1); // also when the background gives the space back
    other.photos.saveImage(noise(4));
    user.photos.saveImage(noise(5)); // writes over what it has not seen
    CHECK(heard() == 2);
    other.photos.deletePhoto(user.uuids().at(0));
    CHECK(heard() == 1);
    user.photos.deleteAllPhotos();
    CHECK(heard() == 1);
    other.photos.saveImage(noise(6));
    CHECK(heard() == 1);
    other.photos.deleteAllPhotos();
    CHECK(heard() == 1);
}

TEST_CASE_FIXTURE(WatchedStore,
                  "others' photos are told four times a second at most, and a slow disk's later")
{
    int posts = 0;
    for (int tenth = 0; tenth < 20; ++tenth) {
        other.photos.saveImage(noise(1));
        watch->fileChanged();
        time.advance(100ms);
        posts += user.takePosts();
    }
    CHECK(posts >= 6);
    CHECK(posts <= 8);
    time.advance(10s);
    user.takePosts();

    watch->fileChanged(); // the last write; the commit is seen only when it is synced
    time.advance(400ms);
    other.photos.saveImage(noise(2));
    time.advance(1s);
    CHECK(user.takePosts() == 1);
}

TEST_CASE("photos that another process stores are heard of")
{
    const TemporaryFolder folder;
    const SystemClock clock;
    AsioQueues queues;
    const auto storage = queues.makeSerialQueue("storage");
    StoreUser user(folder / "store", *storage, clock);
    REQUIRE(user.loaded);
    const auto watch = std::make_shared<StoreWatch>(StoreWatch::Services{user, user.center, *storage});
    std::promise<void> both;
    const auto observation = user.center.addObserver(countDidChange, [&, isTold = false]() mutable {
        if (user.photos.photoCount() == 2 && !std::exchange(isTold, true))
            both.set_value();
    });
    const auto files = FileWatch::start(folder / "store", "Storage.sqlite", [&] { watch->fileChanged(); });
    REQUIRE(files);
    std::ofstream(folder / "store" / "another file") << "x";
    CHECK(runProgram({PHOTO_SAVER, "two", folder.path()}) == 0);
    CHECK(both.get_future().wait_for(60s) == std::future_status::ready);
    CHECK_FALSE(FileWatch::start(folder / "missing", "x", [] {}));
    storage->async([] {}); // what it has accepted ends before the store does
    queues.close();
}
