#include "analytics/proto/BatchMessage.h"
#include "analytics/worker/UploadStore.h"
#include "platform/base/RandomIdentifier.h"
#include "tests/analytics/JournalRun.h"
#include "tests/fakes/EngineInFolder.h"
#include "tests/fakes/FileFaults.h"

using namespace skyflare;
using namespace std::chrono_literals;
using fileFaults::Kind;

namespace {

using Names = DatabaseFixture::Names;
using Entry = LedgerEntry;

constexpr const char *own = "1:2:linux:3";

/// One process that records and bundles.
struct BundleRun : JournalRun {
    BreakableRandom random;
    UploadStore store{{journal, databases, place.monitor, place.time, random}};

    using JournalRun::JournalRun;

    std::int64_t bundle(const BundleLimits &limits = {}) { return store.bundleOldest(own, limits).value(); }
    [[nodiscard]] std::vector<APMMeasurementBundle> queued(std::size_t mostBytes = 1'000'000)
    {
        std::vector<APMMeasurementBundle> bundles;
        const BundleBatch batch = store.nextBatch(own, 100, mostBytes).value();
        for (const Bytes &message : batch.messages)
            bundles.push_back(BundleMessage::decode(message).value());
        return bundles;
    }
};

Names namesOf(const std::vector<APMMeasurementBundle> &bundles)
{
    Names names;
    for (const APMMeasurementBundle &bundle : bundles)
        for (const APMEvent &event : bundle.events)
            names.push_back(event.name);
    return names;
}

/// Six events of two kinds of metadata, four bundles if each takes two.
void logSix(BundleRun &run)
{
    for (const std::string number : {"1", "2", "3"})
        for (const std::string kind : {"a", "b"}) {
            run.journal.setAppData({.appId = "earlier", .appVersion = kind});
            run.log(kind + number);
        }
    run.journal.commit();
}

/// What the file holds after all: each of the six once, raw or in a bundle, and the ledger knows where.
void checkSix(DatabaseFixture &place)
{
    BundleRun run(place);
    REQUIRE(run.databases.database());
    CHECK(run.count(Entry::Found) + run.count(Entry::Lost) == 0);
    CHECK(run.count(Entry::QueueFound) + run.count(Entry::QueueLost) == 0);
    CHECK(run.balance() == "balanced");
    while (run.bundle({.events = 2}) > 0) {
    }
    const auto bundles = run.queued();
    Names names = namesOf(bundles);
    std::ranges::sort(names);
    CHECK(names == Names{"a1", "a2", "a3", "b1", "b2", "b3"});
    for (std::size_t i = 0; i < bundles.size(); ++i) {
        CHECK(bundles[i].index == std::int64_t(i) + 1);
        CHECK(bundles[i].databaseId == bundles[0].databaseId);
    }
}

} // namespace

TEST_CASE_FIXTURE(DatabaseFixture,
                  "a bundle takes the oldest events of one metadata, and leaves those between")
{
    BundleRun run(*this);
    run.journal.setAppData({.appId = "earlier", .appVersion = "1"});
    run.log(event("a", 9));
    run.journal.setAppData({.appId = "earlier", .appVersion = "2"});
    run.log("b");
    run.journal.setAppData({.appId = "earlier", .appVersion = "1"});
    run.log(event("a", 20), IsRealtime::Yes);
    run.log(event("c", 3));
    run.journal.commit();
    CHECK(*run.store.waiting() == WaitingData{1.7e9, 0, true, false});
    CHECK(run.bundle() == 3);
    CHECK(storedNames() == Names{"b"});
    CHECK_FALSE(*run.databases.database()->hasRealtimeRawEvents());
    CHECK(*run.store.waiting() == WaitingData{1.7e9, 1.7e9 - 3, true, false});
    CHECK(run.bundle() == 1);
    CHECK(run.bundle() == 0);
    CHECK(*run.store.waiting() == WaitingData{0, 1.7e9, true, false});
    const auto bundles = run.queued();
    REQUIRE(bundles.size() == 2);
    CHECK(namesOf(bundles) == Names{"a", "a", "c", "b"});
    CHECK(bundles[0].events[1].previousTimestamp == 1.7e9 - 9);
    CHECK(isRandomIdentifier(bundles[0].databaseId));
    for (std::size_t i = 0; i < 2; ++i) {
        CHECK(bundles[i].appId == own);
        CHECK(bundles[i].metadata.app == APMAppData{.appId = own, .appVersion = i == 0 ? "1" : "2"});
        CHECK(bundles[i].index == std::int64_t(i) + 1);
    }
    CHECK(bundles[0].startTimestamp == 1.7e9 - 20);
    CHECK(bundles[0].previousEndTimestamp == 0);
    CHECK(bundles[1].previousEndTimestamp == 1.7e9 - 3);
    CHECK(ask("SELECT name || lifetime_count || current_bundle_count || last_bundled_timestamp "
              "FROM events ORDER BY name") == Names{"a201699999991.0", "b101700000000.0", "c101699999997.0"});
    CHECK(ask("SELECT is_realtime || '' FROM queue") == Names{"1", "0"});
    CHECK(ask("SELECT 1 FROM raw_events_metadata").empty());
    CHECK(run.count(Entry::Bundled) == 4);
    CHECK(run.balance() == "balanced");
}

TEST_CASE_FIXTURE(DatabaseFixture, "a bundle that no one could tell apart is not made, and its events stay")
{
    BundleRun run(*this);
    CHECK(*run.store.waiting() == WaitingData{});
    CHECK(*run.store.bundleOldest("", {}) == 0);
    CHECK(monitor.takeLines().empty());
    run.log("a");
    run.journal.commit();
    CHECK(run.store.bundleOldest("", {}).error().message == "Failed to insert bundle without App ID");
    run.random.isBroken = true;
    monitor.takeLines();
    CHECK_FALSE(run.store.bundleOldest(own, {}));
    CHECK(monitor.lines.at(0).message ==
          "Cannot generate a database ID. Nothing is bundled. Error: no entropy (random 5)");
    CHECK(storedNames() == Names{"a"});
    run.random.isBroken = false;
    CHECK(run.bundle() == 1);
    const std::string before = run.queued().at(0).databaseId;
    REQUIRE(run.journal.reset());
    CHECK(run.count(Entry::QueueWiped) == 1);
    run.log("b");
    CHECK(run.bundle() == 1);
    CHECK(run.queued().at(0).index == 1);
    CHECK(run.queued().at(0).databaseId != before);
}

TEST_CASE_FIXTURE(DatabaseFixture, "a bundle ends before a batch would be too large; one event goes alone")
{
    BundleRun run(*this);
    constexpr std::size_t mostBytes = 2'000;
    for (int number = 0; number < 60; ++number) {
        APMEvent each = event("n" + std::to_string(number));
        each.parameters.push_back(
            {"text", APMValue(std::string(std::size_t(number == 30 ? 5'000 : number), 'x'))});
        run.log(each);
    }
    run.journal.commit();
    while (run.bundle({.events = 25, .batchBytes = mostBytes}) > 0) {
    }
    const auto bundles = run.queued();
    const auto batchSize = [](const APMMeasurementBundle &each) {
        const APMBatchFacts facts{1.7e9, std::string(32, '9'), true};
        return BatchMessage::encode(facts, {BundleMessage::encode(each)}).size();
    };
    for (std::size_t i = 0; i < bundles.size(); ++i) {
        CAPTURE(i);
        const std::size_t count = bundles[i].events.size();
        CHECK((batchSize(bundles[i]) <= mostBytes || (count == 1 && bundles[i].events[0].name == "n30")));
        if (i + 1 == bundles.size() || count == 25)
            continue;
        APMMeasurementBundle larger = bundles[i];
        larger.events.push_back(bundles[i + 1].events[0]);
        CHECK(batchSize(larger) > mostBytes);
    }
    CHECK(bundles.at(0).events.size() == 25);
    CHECK(namesOf(bundles).size() == 60);
    CHECK(namesOf(run.queued(1)).size() == 25); // a limit that was lowered blocks nothing
}

TEST_CASE_FIXTURE(DatabaseFixture, "what cannot be read is lost, and in nobody's way")
{
    BundleRun run(*this);
    for (const char *name : {"a", "b", "c", "d", "e", "f", "g"})
        run.log(name);
    run.journal.commit();
    make("UPDATE raw_events SET data = x'ffff' WHERE name = 'a';"
         "UPDATE raw_events SET data = x'0a0162120712050a01ff2800' WHERE name = 'b';" // no UTF-8
         "UPDATE raw_events SET data = x'0802' WHERE name = 'c';"                     // a number for a text
         "UPDATE raw_events SET data = x'0a016412030a0578' WHERE name = 'd';"         // longer than it is
         "UPDATE raw_events SET data = x'' WHERE name = 'e';"
         "UPDATE raw_events SET timestamp = 9e999 WHERE name = 'f';"
         "UPDATE raw_events_metadata SET metadata = x'ff'");
    CHECK(run.bundle() == 1 + 6);
    CHECK(run.count(Entry::Lost) == 6);
    CHECK(namesOf(run.queued()) == Names{"g"});
    CHECK(run.queued().at(0).metadata == APMMetadata{{}, {.appId = own}});
    run.log("h");
    run.journal.commit();
    make("UPDATE raw_events SET data = x'ffff'");
    CHECK(run.bundle() == 1);
    CHECK(run.queued().size() == 1);
    CHECK(run.balance() == "balanced");
}

TEST_CASE_FIXTURE(DatabaseFixture,
                  "bundles of others and damaged ones are passed over; what was sent goes once")
{
    BundleRun run(*this);
    const auto queue = [&](const std::string &name, const char *appID) {
        run.log(name);
        return run.store.bundleOldest(appID, {}).value();
    };
    queue("a", "other");
    queue("damaged", own);
    queue("b", own);
    queue("c", own);
    make("UPDATE queue SET data = CAST(substr(data, 1, 40) || x'00' || substr(data, 42) AS BLOB) WHERE rowid "
         "= 2");
    monitor.takeLines();
    CHECK(namesOf(run.queued()) == Names{"b", "c"});
    CHECK(monitor.takeLines().at(0).message ==
          "Cannot read bundle. Row id, error: 2, Unable to decompress bundle data");
    const BundleBatch batch = *run.store.nextBatch(own, 1, 1'000'000);
    CHECK(batch.newestEvent == 1.7e9);
    REQUIRE(run.store.didFail(batch));
    CHECK(ask("SELECT retry_count || '' FROM queue") == Names{"0", "0", "1", "0"});
    const BundleBatch both = *run.store.nextBatch(own, 9, 1'000'000);
    REQUIRE(run.store.didUpload(batch));
    REQUIRE(run.store.didUpload(both));
    CHECK(run.count(Entry::Uploaded) == 2);
    run.journal.close();
    {
        BundleRun next(*this); // who counts what can be read
        REQUIRE(next.databases.database());
        CHECK(next.count(Entry::QueueLost) == 1);
        CHECK(next.balance() == "balanced");
        REQUIRE(next.journal.reset());
        next.log("d");
        CHECK(next.bundle() == 1);
        const BundleBatch sent = *next.store.nextBatch(own, 9, 1'000'000);
        REQUIRE(next.journal.reset());
        next.log("e");
        CHECK(next.bundle() == 1);
        REQUIRE(next.store.didUpload(sent)); // whose row ids are another bundle's now
        CHECK(namesOf(next.queued()) == Names{"e"});
        REQUIRE(next.store.keepSettings({{1, 2}, 5}));
        CHECK(**next.store.settings() == APMRemoteConfigRecord{{1, 2}, 5});
        next.journal.close();
    }
    make("INSERT INTO queue SELECT * FROM queue");
    BundleRun last(*this);
    REQUIRE(last.databases.database());
    CHECK(last.count(Entry::QueueFound) == 1);
    time.advance(29 * 24h);
    REQUIRE(last.journal.deleteStaleDataIfDue());
    CHECK(last.count(Entry::QueueStale) == 2);
    CHECK(last.balance() == "balanced");
}

TEST_CASE("however bundling is cut off, every event is in one place, and counted there")
{
    const auto bundleAll = [](Kind kind, long at) {
        DatabaseFixture place;
        long calls = 0;
        {
            BundleRun run(place);
            logSix(run);
            fileFaults::plan(kind, at);
            for (int number = 0; number < 5; ++number)
                static_cast<void>(run.store.bundleOldest(own, {.events = 2}));
            calls = fileFaults::calls();
            fileFaults::plan(Kind::None);
            const EventTally tally = run.ledger.tally();
            CHECK(tally.balance({0, tally.waitingRows(), tally.bundledEvents()}));
            run.journal.close();
        }
        checkSix(place);
        return calls;
    };
    for (const Kind kind : {Kind::FailOnce, Kind::FailFromThenOn}) {
        const long all = bundleAll(kind, 0);
        CHECK(all > 20);
        for (long at = 1; at <= all; ++at) {
            CAPTURE(at);
            bundleAll(kind, at);
        }
    }
}
