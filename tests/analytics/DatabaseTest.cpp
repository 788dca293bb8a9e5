#include "analytics/proto/BatchMessage.h"
#include "analytics/proto/EventMessage.h"
#include "analytics/proto/MetadataMessage.h"
#include "analytics/proto/UserAttributeMessage.h"
#include "platform/base/Files.h"
#include "tests/analytics/DatabaseFixture.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

constexpr double day = 86'400;

Bytes bytesOf(std::string_view text)
{
    return {text.begin(), text.end()};
}

Bytes message(const std::string &appId, double endTimestamp, int events = 1)
{
    APMMeasurementBundle bundle;
    bundle.appId = appId;
    bundle.endTimestamp = endTimestamp;
    bundle.events.assign(std::size_t(events), {"app", "launch", endTimestamp, 0, {}});
    return BundleMessage::encode(bundle);
}

Result<> insertBundle(APMDatabase &database, const std::string &appId, double endTimestamp, int events = 1,
                      IsRealtime isRealtime = IsRealtime::No)
{
    const Bytes encoded = message(appId, endTimestamp, events);
    const FinishedBundle bundle{appId, endTimestamp, endTimestamp, encoded};
    return database.insertBundle(&bundle, isRealtime);
}

} // namespace

TEST_CASE("messages say again what was written, in UTF-8, and keep their form")
{
    const APMParameters item{{"price", APMValue(0.1)}, {"id", APMValue(std::string())}};
    const APMParameters parameters{{"least", APMValue(std::numeric_limits<std::int64_t>::min())},
                                   {"zero", APMValue(0.0)},
                                   {"text", APMValue(std::string("\xC3\xA4\xF0\x9F\x8E\x86"))},
                                   {"items", APMValue(APMValue::Array{item, {}})},
                                   {"none", APMValue(APMValue::Array{})}};
    const APMEvent event{"app+gtm", "purchase", 1.7e9 + 0.25, 12.5, parameters};
    CHECK(*EventMessage::decode(EventMessage::encode(event)) == event);
    const APMMetadata metadata{{{"_id", "app", 3, APMValue(std::string("me"))}, {"n", "", 0, APMValue(1.0)}},
                               {.appId = "1:2", .appVersion = "0.1", .language = "de"}};
    CHECK(*MetadataMessage::decode(MetadataMessage::encode(metadata)) == metadata);

    const APMEvent small{"fa", "a\xFF", 2, 0, {{"b", APMValue(std::int64_t{1})}}};
    const Bytes asEver{0x0A, 4, 'a', 0xEF, 0xBF, 0xBD, 0x12, 5,    0x0A, 1, 'b',  0x18, 1,   0x19,
                       0,    0, 0,   0,    0,    0,    0,    0x40, 0x28, 1, 0x32, 2,    'f', 'a'};
    CHECK(EventMessage::encode(small) == asEver);
    CHECK(EventMessage::decode(asEver)->name == "a\xEF\xBF\xBD");
    CHECK_FALSE(EventMessage::decode(bytesOf("\x0A\x7F")));
    CHECK_FALSE(UserAttributeMessage::decode(bytesOf("\x0A\x01n")));
    CHECK(MetadataMessage::fingerprint(bytesOf("foobar")) == static_cast<std::int64_t>(0x85944171f73967e8));

    APMValue nested(APMValue::Array{});
    for (int depth = 0; depth < 40; ++depth)
        nested = APMValue(APMValue::Array{{{"in", nested}}});
    CHECK(EventMessage::decode(EventMessage::encode({"app", "deep", 1, 0, {{"in", nested}}})));
}

TEST_CASE_FIXTURE(DatabaseFixture, "the generic store says what failed, and refuses what says nothing")
{
    auto store = *APMSqliteStore::open(file, monitor, {});
    constexpr std::array columns{ColumnInfo{"a", "INTEGER NOT NULL PRIMARY KEY"}, ColumnInfo{"b", "TEXT"}};
    REQUIRE(store->ensureTableWithName("t", {columns, {}, {}, {}}));
    REQUIRE(store->upsertRecord({{"a", std::int64_t{1}}, {"b", std::string("x")}}, "t"));
    REQUIRE(store->upsertRecord({{"a", std::int64_t{2}}, {"b", Bytes{1, 2}}}, "t"));
    REQUIRE(store->upsertRecord({{"a", std::int64_t{2}}, {"b", 2.5}}, "t"));
    REQUIRE(store->updateRecord({{"b", SqliteValue()}}, "t", "a", std::int64_t{1}));
    REQUIRE(store->increaseColumn({"a", 5, "t", "b > ?", {2.0}}));
    const std::vector<Record> rows{{{"a", std::int64_t{1}}, {"b", SqliteValue()}},
                                   {{"a", std::int64_t{7}}, {"b", std::string("2.5")}}};
    CHECK(*store->recordsForQuery("SELECT * FROM t WHERE a < ?", {std::int64_t{9}}) == rows);
    CHECK(*store->numberForQuery("SELECT MAX(a) FROM t; -- one") == 7);
    CHECK(monitor.takeLines().empty());

    CHECK(store->upsertRecord({{"a", std::int64_t{1}}}, "u").error().message ==
          "Database operation \"upsert record\" failed with sqlite code 1 and error message \"no such table: "
          "u\"");
    CHECK(store->upsertRecord({{"a", std::int64_t{1}}}, "").error().message ==
          "Received empty table name for upsert");
    CHECK(store->recordsForQuery("SELECT 1; SELECT 2").error().message ==
          "Query contained more than one SQL statement.");
    CHECK(store->recordsForQuery("").error().message == "Received empty query for query records");
    REQUIRE(store->execute({"fill", "PRAGMA max_page_count = 2"}));
    CHECK(store->upsertRecord({{"a", std::int64_t{8}}, {"b", std::string(9000, 'x')}}, "t").error().message ==
          "Failed to insert data type. Table is full");
    CHECK(monitor.takeLines().size() == 5);

    const auto refused = store->performTransactionWithError([&]() -> Result<> {
        CHECK(store->deleteAllRecordsFromTableWithName("t"));
        throw std::runtime_error("thrown");
    });
    CHECK(refused.error().message == "Transaction failed: thrown");
    CHECK_FALSE(store->performTransactionWithError([&]() -> Result<> {
        CHECK(store->execute({"give up", "ROLLBACK"})); // as SQLite does by itself on a full disk
        CHECK_FALSE(store->upsertRecord({{"a", std::int64_t{9}}}, "t"));
        return {};
    }));
    REQUIRE(store->deleteRecordFromTableWithName("t", "a", std::int64_t{7}));
    CHECK(*store->rowCountForTableWithName("t") == 1);
    store->close();
    CHECK(store->deleteRecordFromTableWithName("t", "a", std::int64_t{1}).error().message ==
          "Delete record failed. Database not open.");
    CHECK(store->closeAndDeleteDatabase());
    CHECK_FALSE(std::filesystem::exists(file));
}

TEST_CASE_FIXTURE(DatabaseFixture, "a database of an older version keeps its rows and gains what it lacks")
{
    make(olderVersion);
    make("CREATE TABLE events (name TEXT PRIMARY KEY, other INTEGER NOT NULL);" // lacks what it must have
         "CREATE TABLE subscriptions (subscription_id TEXT NOT NULL PRIMARY KEY, b INTEGER NOT NULL)");
    open();
    CHECK(monitor.takeLines() ==
          std::vector<RecordingMonitor::Line>{
              {APMMonitor::Level::Error, 22006,
               "Failed to ensure table. Table, error: events, Table is missing required columns"},
              {APMMonitor::Level::Error, 22006,
               "Failed to ensure table. Table, error: subscriptions, Table contains unknown non-optional "
               "columns"}});
    CHECK(ask("SELECT type FROM pragma_table_info('raw_events') WHERE name = 'timestamp'") == Names{"REAL"});
    CHECK(ask("SELECT rowid || name || timestamp || ifnull(note, '-') || (is_realtime IS NULL) "
              "FROM raw_events") == Names{"3a5.0x1", "7b6.0-1"});
    CHECK(ask("SELECT hex(data) || ifnull(retry_count, '-') FROM queue") == Names{"01-"});
    CHECK(ask("SELECT name FROM sqlite_master WHERE name LIKE '%_old'").empty());
}

TEST_CASE_FIXTURE(DatabaseFixture, "an event too many drops the oldest one, and what is undone comes back")
{
    limits.maxStoredEvents = 3;
    const auto database = open();
    const auto insert = [&](const std::string &name) {
        return database->insertRawEvent(event(name), 1, IsRealtime::No);
    };
    for (const char *name : {"a", "b", "c", "d"})
        REQUIRE(insert(name));
    CHECK(storedNames() == Names{"b", "c", "d"});
    const auto undone = database->performTransactionWithError([&]() -> Result<> {
        CHECK(insert("e"));
        CHECK(insert("f"));
        return Error{"test", 1, "no"};
    });
    CHECK(undone.error().message == "no");
    REQUIRE(insert("g"));
    CHECK(storedNames() == Names{"c", "d", "g"});
    limits.maxStoredEvents = 2;
    database->setLimits(limits);
    REQUIRE(insert("h"));
    CHECK(storedNames() == Names{"g", "h"});
    limits.maxStoredEvents = 0;
    database->setLimits(limits);
    CHECK(insert("i").error().message == "Failed to insert data type. Table is full");
    for (int number = 0; number < 1002; ++number)
        REQUIRE(database->insertSubscriptionWithID(std::to_string(number)));
    CHECK(ask("SELECT count(*) || min(rowid) FROM subscriptions") == Names{"10003"});
}

TEST_CASE_FIXTURE(DatabaseFixture, "what is older than 28 days, or ahead by more, goes once a day")
{
    const auto database = open();
    for (const auto &[name, age] : {std::pair("old", 28 * day + 1), std::pair("kept", 28 * day),
                                    std::pair("ahead", -28 * day), std::pair("far ahead", -28 * day - 1)}) {
        REQUIRE(database->insertRawEvent(event(name, age), 1, IsRealtime::No));
        REQUIRE(insertBundle(*database, "1:2", 1.7e9 - age));
    }
    REQUIRE(database->insertIfNotExistsRawEventMetadata(RawEventMetadata::of({}))); // of none of them
    CHECK(std::ranges::count(monitor.lines, "Storing bundle outside of the max uploading time span",
                             &RecordingMonitor::Line::message) == 2);
    config.last = 1.7e9 - day;
    REQUIRE(database->maybeDeleteStaleData());
    CHECK(storedNames().size() == 4);
    config.last -= 1;
    std::uint64_t stale = 0;
    REQUIRE(database->maybeDeleteStaleData([&](const APMDatabase::RemovedEvents &removed) -> Result<> {
        stale = removed.inBundles;
        return {};
    }));
    CHECK(stale == 2);
    CHECK(storedNames() == Names{"kept", "ahead"});
    CHECK(*database->rawEventCount() == 2);
    CHECK(ask("SELECT 1 FROM raw_events_metadata").empty());
    const auto left = database->queryBundlesWithCountLimit({"1:2", 10, 1'000'000});
    REQUIRE(left->size() == 2);
    CHECK(left->front().endTimestamp == 1.7e9 - 28 * day);
    CHECK(config.last == 1.7e9);
    limits.maxQueueTime = -1;
    database->setLimits(limits);
    config.last = 0;
    CHECK(database->maybeDeleteStaleData().error().message ==
          "Cannot delete stale raw events given negative time period");
    CHECK(config.last == 0);
}

TEST_CASE_FIXTURE(DatabaseFixture, "bundles wait in order, as many as fit, and count their failures")
{
    const auto database = open();
    CHECK(database->insertBundle(nullptr, IsRealtime::No).error().message == "Failed to insert nil bundle");
    CHECK(insertBundle(*database, "", 5).error().message == "Failed to insert bundle without App ID");
    for (const double timestamp : {0.0, std::nan("")})
        CHECK(insertBundle(*database, "x", timestamp).error().message ==
              "Failed to insert bundle without valid timestamp");
    CHECK_FALSE(*database->latestBundleEndTimestamp());
    REQUIRE(insertBundle(*database, "1:2", 1.7e9, 100, IsRealtime::Yes));
    REQUIRE(insertBundle(*database, "1:2", 1.7e9, 1));
    REQUIRE(insertBundle(*database, "1:2", 1.7e9 - 1, 2));
    make("INSERT INTO queue (data, bundle_end_timestamp) VALUES (x'', 1)"); // as an older version
    const auto counts = [&](std::int64_t countLimit, std::size_t sizeLimit) {
        Names found;
        const auto bundles = database->queryBundlesWithCountLimit({"1:2", countLimit, sizeLimit});
        for (const QueuedBundle &each : *bundles)
            found.push_back(std::to_string(each.mark.events));
        return found;
    };
    const std::vector<Bytes> firstTwo{message("1:2", 1.7e9, 100), message("1:2", 1.7e9)};
    const std::size_t two = BatchMessage::encode({1, std::string(32, '9'), true}, firstTwo).size();
    CHECK(counts(9, two) == Names{"100", "1"});
    CHECK(counts(9, two - 1) == Names{"100"});
    CHECK(counts(9, 1) == Names{"100"});
    CHECK(counts(2, 1'000'000) == Names{"100", "1"});
    CHECK(counts(0, 1'000'000).empty());
    monitor.takeLines();
    CHECK(counts(9, 1'000'000) == Names{"100", "1", "2"});
    CHECK(monitor.lines.at(0).message ==
          "Cannot read bundle. Row id, error: 4, Cannot decompress an empty bundle data");

    const std::vector<std::int64_t> failed{1, 4};
    REQUIRE(database->incrementRetryCounterForBundlesWithIDs(failed));
    REQUIRE(database->incrementRetryCounterForBundlesWithIDs(failed));
    CHECK(ask("SELECT retry_count || '' FROM queue") == Names{"2", "0", "0", "2"});
    CHECK(*database->hasBundlesWithRetryCount(2));
    const auto first = database->queryBundlesWithCountLimit({"1:2", 1, 0})->at(0);
    CHECK(first.retryCount == 2);
    CHECK(*database->hasRealtimeBundles());
    CHECK(*database->deleteBundlesWithRowIDs(std::vector{first.mark, first.mark}) == 100);
    CHECK_FALSE(*database->hasRealtimeBundles());
    CHECK(*database->latestBundleEndTimestamp() == 1.7e9);
    CHECK(counts(9, 1'000'000) == Names{"1", "2"});
}

TEST_CASE_FIXTURE(DatabaseFixture,
                  "what the engine knows between runs is there at the next, until it is reset")
{
    const APMUserAttribute own{"_id", "app", 3, APMValue(std::string("secret-of-the-user"))};
    const APMUserAttribute level{"level", "auto", 4, APMValue(std::int64_t{5})};
    const APMEventAggregates aggregates{"catch_photo", 9, 2, 1.7e9, 1.6e9, 7, {}, {}, 19'000, 3};
    const APMDailyCounts counts{19'675, 1, 2, 3, 4, 5, 6};
    {
        const auto database = open();
        CHECK(database->updateUserAttribute(level));
        CHECK(database->updateUserAttribute(own));
        CHECK(database->updateEventAggregates(aggregates));
        CHECK(database->updateDailyCounts(counts));
        CHECK(database->updateAppMetadata({4, 1.7e9, {}, 8}));
        CHECK(database->updateRemoteConfig(APMRemoteConfigRecord{Bytes{}, 6}));
    }
    const auto database = open();
    using All = std::vector<APMUserAttribute>;
    CHECK(*database->userAttributesIncludingInternal(IncludingInternal::Yes) == All{own, level});
    CHECK(*database->userAttributesIncludingInternal(IncludingInternal::No) == All{level});
    CHECK(*database->publicUserAttributeCount() == 1);
    CHECK(*database->userAttributeCountWithOrigin("app") == 1);
    CHECK(*database->eventAggregatesWithName("catch_photo") == aggregates);
    CHECK(database->eventAggregates()->size() == 1);
    CHECK(*database->publicEventNameCount() == 1);
    CHECK(*database->dailyCounts() == counts);
    CHECK(*database->queryAppMetadata() == APMAppMetadata{4, 1.7e9, {}, 8});
    CHECK(*database->remoteConfig() == APMRemoteConfigRecord{Bytes{}, 6});
    REQUIRE(database->reset());
    CHECK(*database->dailyCounts() == APMDailyCounts{});
    CHECK_FALSE(*database->remoteConfig());
    for (const char *ending : {"", "-wal"}) {
        const Bytes bytes = *readFile(file.string() + ending);
        CHECK(std::string(bytes.begin(), bytes.end()).find("secret") == std::string::npos);
    }
    database->close();
    CHECK(database->updateDailyCounts(counts).error().message == "Database not open");
}
