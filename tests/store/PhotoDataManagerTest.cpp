#include "platform/sqlite/Database.h"
#include "tests/store/StoreFixture.h"

#include <doctest/doctest.h>

#include <regex>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

AttributeValue bytes(Bytes data)
{
    return std::make_shared<const MemoryBytes>(std::make_shared<const Bytes>(std::move(data)));
}

/// Everything that SQLite says how it would run a query.
std::string planOf(const std::filesystem::path &file, const std::string &sql)
{
    const auto database = Database::open(file, OpenMode::Query, 0ms);
    auto rows = (*database)->prepare("EXPLAIN QUERY PLAN " + sql);
    std::string plan;
    while (*rows->step())
        plan += rows->text(3).value_or("") + '\n';
    return plan;
}

} // namespace

TEST_CASE("photos come back newest first, as they were saved")
{
    const TemporaryFolder folder;
    VirtualTime time(1000.25);
    StoreUser user(folder / "made" / "by the store", time);
    REQUIRE(user.loaded);
    CHECK(user.photos.photoCount() == 0);
    CHECK(user.uuids(20).empty());

    for (std::uint32_t number = 0; number < 25; ++number) {
        if (number != 24) // the last two are of the same moment: the later one counts as newer
            time.advance(200ms);
        user.photos.saveImage(noise(number));
    }
    CHECK(user.takePosts() == 25);
    CHECK(user.photos.photoCount() == 25);
    CHECK(user.photos.fetchImages(0).size() == 25);
    const auto newest = user.photos.fetchImages(1);
    REQUIRE(newest.size() == 1);
    CHECK(newest[0].createdDate == doctest::Approx(1005.05).epsilon(1e-9));
    const std::regex version4("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    CHECK(std::regex_match(newest[0].uuid, version4));

    StoreUser afterRestart(folder / "made" / "by the store", time);
    const auto photos = afterRestart.photos.fetchImages(20);
    REQUIRE(photos.size() == 20);
    for (std::uint32_t place = 0; place < 20; ++place) {
        CAPTURE(place);
        CHECK(pixelsOf(photos[place].image) == pixelsOf(noise(24 - place)));
    }
    CHECK(user.console.lines().empty());
}

TEST_CASE_FIXTURE(StoreFixture,
                  "what is no whole photo is counted but not fetched, and takes its place in the limit")
{
    const Bytes png = **noise(1).pngData();
    const Bytes half(png.begin(), png.begin() + std::ptrdiff_t(png.size()) / 2);
    user.insert("whole", bytes(png), 1.0);
    user.insert("truncated", bytes(half), 2.0);
    user.insert("garbage", bytes({1, 2, 3}), 3.0);
    user.insert("empty", bytes({}), 4.0);
    user.insert("no data", {}, 5.0);
    user.insert({}, bytes(png), 6.0);
    user.insert("no date", bytes(png), {});
    CHECK(user.console.lines().empty());
    CHECK(user.photos.photoCount() == 7);
    CHECK(user.uuids() == std::vector<std::string>{"whole"});
    CHECK(user.uuids(5).empty());
    CHECK(user.uuids(6) == std::vector<std::string>{"whole"});
}

TEST_CASE_FIXTURE(StoreFixture, "deleting takes every photo of a uuid, and records handed out stay whole")
{
    const Bytes png = **noise(7).pngData();
    user.insert("twice", bytes(png), 1.0);
    user.insert("twice", bytes(png), 2.0);
    user.insert("stays", bytes(png), 3.0);
    const auto records = user.photos.fetchImages(0);
    REQUIRE(records.size() == 3);

    user.photos.deletePhoto("unknown");
    CHECK(user.photos.photoCount() == 3);
    CHECK(user.takePosts() == 1);
    user.photos.deletePhoto("twice");
    CHECK(user.takePosts() == 1);
    CHECK(user.uuids() == std::vector<std::string>{"stays"});
    time.advance(10s);
    for (const PhotoModel &record : records)
        CHECK(pixelsOf(record.image) == pixelsOf(noise(7)));
}

TEST_CASE("delete-all answers at once, and the disk has its space back later, even after a crash")
{
    const TemporaryFolder folder;
    VirtualTime time;
    auto user = std::make_unique<StoreUser>(folder.path(), time);
    const auto file = user->persistentContainer().file();
    const auto log = file.string() + "-wal";
    for (std::uint32_t number = 0; number < 30; ++number)
        user->photos.saveImage(noise(number, 1000));
    time.advance(1s);
    CHECK(std::filesystem::file_size(file) > 30'000'000);
    const auto records = user->photos.fetchImages(2);
    StoreUser other(folder.path(), time); // knows the tables as they were
    CHECK(other.photos.photoCount() == 30);
    time.advance(1s);
    user->takePosts();

    user->photos.deleteAllPhotos();
    CHECK(user->takePosts() == 1);
    CHECK(user->photos.photoCount() == 0);
    CHECK(user->uuids().empty());
    CHECK(other.photos.photoCount() == 0);
    other.photos.saveImage(noise(100, 1000));
    CHECK(user->photos.photoCount() == 1);
    CHECK(user->uuids() == other.uuids());
    CHECK(std::filesystem::file_size(file) > 30'000'000);

    bool isSameRun = true;
    SUBCASE("at the next start")
    {
        isSameRun = false;
        user.reset();
        time.advance(10s);
        CHECK(std::filesystem::file_size(file) > 30'000'000);
        user = std::make_unique<StoreUser>(folder.path(), time);
    }
    SUBCASE("while records of deleted rows are held") {}
    time.advance(10s);
    CHECK(std::filesystem::file_size(file) < 1'300'000);
    CHECK(std::filesystem::file_size(log) == 0);
    CHECK(other.photos.photoCount() == 1);
    if (isSameRun) {
        CHECK(pixelsOf(records.at(0).image) == pixelsOf(noise(29, 1000)));
        CHECK(pixelsOf(records.at(1).image) == pixelsOf(noise(28, 1000)));
    }
}

TEST_CASE_FIXTURE(StoreFixture, "neither counting nor fetching looks through the rows")
{
    const EntityTable table(storageModel().entities.at(0));
    const auto file = user.persistentContainer().file();
    FetchRequest request{.entityName = "PhotoEntity"};
    CHECK(planOf(file, table.countSql(request)).find("COVERING INDEX") != std::string::npos);
    request.sortDescriptor = {"createdDate", false};
    CHECK(planOf(file, table.selectSql(request)) == "SCAN PhotoEntity USING INDEX PhotoEntity_createdDate\n");
    request = {.entityName = "PhotoEntity", .predicate = FetchRequest::Equality{"uuid", "U"}};
    CHECK(planOf(file, table.selectSql(request)) ==
          "SEARCH PhotoEntity USING INDEX PhotoEntity_uuid (uuid=?)\n");
}
