#include "platform/base/Files.h"
#include "platform/sqlite/Transaction.h"
#include "tests/fakes/ChildProcess.h"
#include "tests/store/StoreFixture.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <functional>
#include <list>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

std::unique_ptr<Database> open(const std::filesystem::path &file)
{
    return *Database::open(file, OpenMode::Write, 0ms);
}

bool execute(Database &database, const std::string &sql)
{
    return database.execute(sql).has_value();
}

/// What a photo saver has said that it stored.
struct Announced {
    Lines uuids; ///< since it last began to delete all

    void take(const std::string &line)
    {
        if (line == "deleting")
            uuids.clear();
        else if (line.size() == 36)
            uuids.push_back(line);
    }

    /// Opens the store after the saver's end: all of them are there, and what is there is whole.
    void checkIn(const std::filesystem::path &folder) const
    {
        VirtualTime time;
        StoreUser user(folder, time);
        REQUIRE(user.loaded);
        Lines whole;
        for (const PhotoModel &photo : user.photos.fetchImages(0)) {
            CHECK(photo.image.pixels());
            whole.push_back(photo.uuid);
        }
        for (const std::string &uuid : uuids)
            CHECK(std::count(whole.begin(), whole.end(), uuid) == 1);
        CHECK(user.photos.photoCount() == std::int64_t(whole.size()));
        time.advance(10s);
        const auto database = open(user.persistentContainer().file());
        auto check = database->prepare("PRAGMA integrity_check");
        CHECK(*check->step());
        CHECK(check->text(0) == "ok");
    }
};

/// Runs the shell's lines as root of a name space of its own: $1 is an empty folder, $2 the photo saver.
/// Nothing if the machine has no such name spaces.
std::optional<Lines> runWithOwnDisks(const std::string &script, const std::filesystem::path &folder)
{
    if (ChildProcess({"unshare", "-rm", "true"}).wait() != 0) {
        MESSAGE("NOT TESTED: this machine does not let us mount a disk of our own (unshare -rm)");
        return {};
    }
    return ChildProcess({"unshare", "-rm", "sh", "-ec", script, "sh", folder.string(), PHOTO_SAVER})
        .readAll();
}

} // namespace

TEST_CASE_FIXTURE(StoreFixture, "what could not be saved counts, is fetched, and goes with the next save")
{
    user.photos.saveImage(noise(1));
    CHECK(user.takePosts() == 1);
    const std::string first = user.uuids().at(0);

    const auto other = open(user.persistentContainer().file());
    REQUIRE(execute(*other, "BEGIN IMMEDIATE"));
    time.advance(1s);
    user.photos.saveImage(noise(2));
    user.photos.deletePhoto(first);
    user.photos.deleteAllPhotos();
    CHECK(user.console.lines() == Lines{"Failed to save image: database is locked (SQLite 5)",
                                        "Failed to delete photo: database is locked (SQLite 5)",
                                        "Failed to delete all photos: database is locked (SQLite 5)"});
    CHECK(user.takePosts() == 0);
    CHECK(user.photos.photoCount() == 2);
    const auto both = user.photos.fetchImages(0);
    REQUIRE(both.size() == 2);
    CHECK(pixelsOf(both[0].image) == pixelsOf(noise(2)));
    CHECK(user.uuids(1) == Lines{both[0].uuid});

    REQUIRE(execute(*other, "ROLLBACK"));
    StoreUser another(folder.path(), time);
    CHECK(another.photos.photoCount() == 1);
    SUBCASE("of a photo")
    {
        user.photos.saveImage(noise(3));
        CHECK(another.photos.photoCount() == 3);
    }
    SUBCASE("that delete-all does, after the rows are gone")
    {
        user.photos.deleteAllPhotos();
        CHECK(another.uuids() == Lines{both[0].uuid});
    }
    SUBCASE("unless it is deleted before")
    {
        user.photos.deletePhoto(both[0].uuid);
        CHECK(another.uuids() == Lines{first});
    }
    CHECK(user.takePosts() == 1);
    CHECK(user.context().insertedObjects().empty());
    CHECK(user.uuids() == another.uuids());
    CHECK(pixelsOf(both[0].image) == pixelsOf(noise(2)));
}

TEST_CASE("a file that is not ours is refused and stays as it is")
{
    using Make = std::function<void(const std::filesystem::path &)>;
    const auto refusal = [](const Make &make) {
        const TemporaryFolder folder;
        VirtualTime time;
        const auto file = folder / "Storage.sqlite";
        const auto contents = [&file] {
            const auto bytes = readFile(file);
            const auto log = readFile(file.string() + "-wal");
            return std::pair(bytes ? *bytes : Bytes(), log ? *log : Bytes());
        };
        make(file);
        const auto before = contents();
        std::string said;
        {
            const StoreUser user(folder.path(), time);
            REQUIRE_FALSE(user.loaded);
            CHECK(user.loaded.error().userInfo.at("path") == file.string());
            said = user.loaded.error().description();
        }
        CHECK(contents() == before);
        return said;
    };
    for (const std::size_t garbage : {5000U, 6U})
        CHECK(refusal([&](const auto &file) { REQUIRE(replaceFile(file, Bytes(garbage, 'x'))); }) ==
              "file is not a database (SQLite 26)");
    CHECK(refusal([](const auto &file) {
              execute(*open(file), "PRAGMA journal_mode = WAL; CREATE TABLE t(a); PRAGMA user_version = 2");
          }) == "the file has version 2, this program knows version 1 (persistence 1)");
    CHECK(refusal([](const auto &file) { // the version is in a log that a crash left
              const auto database = open(file);
              database->setCheckpointsOnClose(false);
              execute(*database, "PRAGMA journal_mode = WAL; CREATE TABLE t(a); PRAGMA user_version = 7");
          }) == "the file has version 7, this program knows version 1 (persistence 1)");
    CHECK(refusal([](const auto &file) { execute(*open(file), "CREATE TABLE t(a)"); }) ==
          "the file is another program's database (persistence 1)");
    CHECK(refusal([](const auto &file) { std::filesystem::create_directory(file); }) ==
          "unable to open database file (SQLite 14)");

    const TemporaryFolder folder;
    VirtualTime time;
    folder.write("file", "no folder");
    const StoreUser user(folder / "file" / "store", time);
    CHECK_FALSE(user.loaded);
}

TEST_CASE("several processes may make one store at the same time, and use it")
{
    for (int round = 0; round < 10; ++round) {
        const TemporaryFolder folder(memoryFolder());
        std::list<ChildProcess> savers;
        for (int number = 0; number < 6; ++number)
            savers.emplace_back(Lines{PHOTO_SAVER, "two", folder.path().string()});
        for (ChildProcess &saver : savers) {
            CHECK(saver.readAll() == Lines{});
            CHECK(saver.wait() == 0);
        }
        VirtualTime time;
        StoreUser user(folder / "store", time);
        CHECK(user.photos.fetchImages(0).size() == 12);
    }
}

TEST_CASE("a process killed in the middle of any change to a file loses no photo that it had announced")
{
    const auto run = [](long deadlyChange) {
        const TemporaryFolder folder(memoryFolder());
        ChildProcess saver({PHOTO_SAVER, "crash", folder.path().string(), std::to_string(deadlyChange)});
        auto lines = saver.readAll();
        Announced announced;
        for (const std::string &line : lines)
            announced.take(line);
        saver.wait();
        announced.checkIn(folder.path());
        return lines;
    };
    const auto whole = run(0);
    REQUIRE_FALSE(whole.empty());
    const long changes = std::stol(whole.back());
    CHECK(changes > 50);
    for (long deadlyChange = 1; deadlyChange <= changes; ++deadlyChange) {
        CAPTURE(deadlyChange);
        CHECK(run(deadlyChange).size() < 6);
    }
}

TEST_CASE("on a full disk nothing is lost, and delete-all makes room")
{
    const TemporaryFolder folder;
    const auto lines = runWithOwnDisks("mount -t tmpfs -o size=16m none \"$1\"\n"
                                       "exec \"$2\" full \"$1\"\n",
                                       folder.path());
    if (lines)
        CHECK(*lines == Lines{"1 photos, 1 whole, 0 pending, 1 posts",
                              "Failed to save image: database or disk is full (SQLite 13)",
                              "1 photos, 1 whole, 1 pending, 0 posts",
                              "2 photos, 2 whole, 0 pending, 1 posts"});
}

TEST_CASE("a store that cannot be written shows its photos and says what it cannot do")
{
    for (const std::string what : {"store", "store/Storage.sqlite"}) {
        CAPTURE(what);
        const TemporaryFolder folder;
        const auto lines = runWithOwnDisks("what=\"$1/" + what +
                                               "\"\n"
                                               "mount -t tmpfs none \"$1\"\n"
                                               "\"$2\" two \"$1\"\n"
                                               "mount --bind \"$what\" \"$what\"\n"
                                               "mount -o remount,bind,ro \"$what\"\n"
                                               "exec \"$2\" read-only \"$1\"\n",
                                           folder.path());
        if (lines)
            CHECK(*lines ==
                  Lines{"2 photos, 2 whole, 0 pending, 0 posts",
                        "Failed to save image: attempt to write a readonly database (SQLite 8)",
                        "Failed to delete photo: attempt to write a readonly database (SQLite 8)",
                        "Failed to delete all photos: attempt to write a readonly database (SQLite 8)",
                        "3 photos, 3 whole, 1 pending, 0 posts"});
    }
}
