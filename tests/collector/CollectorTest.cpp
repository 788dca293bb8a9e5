#include "analytics/store/Gzip.h"
#include "platform/sqlite/Database.h"
#include "tests/collector/CollectorFixture.h"

#include <fstream>
#include <limits>
#include <regex>
#include <sstream>

using namespace skyflare;

namespace {

using Events = std::vector<std::string>;

/// Lines of docs/wire-format.md that begin so, without what they begin with.
std::vector<std::string> exampleLines(const std::regex &start)
{
    std::ifstream page(SKYFLARE_SOURCE "/docs/wire-format.md");
    std::vector<std::string> lines;
    std::smatch match;
    for (std::string line; std::getline(page, line);) {
        if (std::regex_search(line, match, start, std::regex_constants::match_continuous))
            lines.push_back(match.suffix());
    }
    return lines;
}

} // namespace

TEST_CASE(
    "the batch in the documents is what the engine writes, what protoc reads and what the collector stores")
{
    Bytes batch;
    for (const std::string &line : exampleLines(std::regex("    [0-9a-f]{4}  "))) {
        std::istringstream bytes(line.substr(0, line.find("  ")));
        for (int byte = 0; bytes >> std::hex >> byte;)
            batch.push_back(static_cast<std::uint8_t>(byte));
    }
    REQUIRE(batch.size() == 204);
    const auto decoded = BatchMessage::decode(batch);
    REQUIRE(decoded);
    CHECK(BatchMessage::encode(decoded->facts, {BundleMessage::encode(decoded->bundles.at(0))}) == batch);

    const TemporaryFolder folder;
    REQUIRE(replaceFile(folder / "batch", batch));
    ChildProcess protoc({"sh", "-c",
                         "protoc --decode=APMPBMeasurementBatch -I" SKYFLARE_SOURCE
                         "/analytics/proto measurement.proto < " +
                             (folder / "batch").string()});
    CHECK(protoc.readAll() ==
          exampleLines(std::regex("    (?=bundles|upload_timestamp|engine_version| |\\})")));

    RunningCollector collector(folder.path());
    REQUIRE(collector.post(batch) == 200);
    auto line = linesIn(folder / "events.jsonl").at(0);
    line["received_timestamp"] = 0;
    CHECK(line == nlohmann::json::parse("{" + exampleLines(std::regex("    \\{(?=\"time)")).at(0)));
}

TEST_CASE(
    "an event with what JSON has no word for, and all that can be known of the machine, becomes one line")
{
    const TemporaryFolder folder;
    APMMeasurementBundle bundle = bundleOf("0123", "4567", 7);
    bundle.metadata.app.osVersion = "6.1";
    bundle.metadata.app.deviceModel = "Pinephone";
    bundle.metadata.app.language = "de-CH";
    bundle.events = {{"app",
                      "catch_photo",
                      -0.5,
                      0,
                      {{"text", APMValue(std::string("a\"\\\n\x01\xff\xc3\xa4"))},
                       {"text", APMValue(std::string("a second one of the name"))},
                       {"real", APMValue(std::numeric_limits<double>::infinity())},
                       {"items", APMValue(APMValue::Array{{{"id", APMValue(std::int64_t{1} << 60)}}, {}})}}},
                     {"", "far", 1e18, 0, {}}};
    RunningCollector collector(folder.path());
    REQUIRE(collector.post(*gzip(batchOf({bundle})), "Content-Encoding: gzip\r\n") == 200);
    auto lines = linesIn(folder / "events.jsonl");
    REQUIRE(lines.size() == 2);
    CHECK(lines[0]["received_timestamp"].get<double>() > 1.79e9);
    lines[0].erase("received_timestamp");
    CHECK(lines[0] == nlohmann::json::parse(R"({"time": "1969-12-31T23:59:59.500000Z", "timestamp": -0.5,
        "name": "catch_photo", "origin": "app", "event_number": 1, "bundle_key": "0123/4567/7",
        "params": {"text": "a\"\\\n\u0001\ufffdä", "real": null, "items": [{"id": 1152921504606846976}, {}]},
        "user_properties": {}, "app_id": "1:2:linux:3", "app_instance_id": "0123", "os_version": "6.1",
        "device_model": "Pinephone", "language": "de-CH", "engine_version": "0.1.0",
        "sent_timestamp": 1700000000.0})"));
    CHECK(lines[1]["time"].is_null());
}

TEST_CASE("a bundle counts once, in whatever order and however often it comes")
{
    const TemporaryFolder folder;
    {
        RunningCollector collector(folder.path());
        RawClient client(collector.port);
        for (const Bytes &batch :
             {batchOf({bundleOf("a", "d", 1, 2), bundleOf("a", "d", 3), bundleOf("a", "d", 1)}),
              batchOf({bundleOf("b", "d", 1), bundleOf("a", "e", 1), bundleOf("a", "d", 2)}),
              batchOf({bundleOf("a", "d", 5), bundleOf("a", "d", 4)})})
            CHECK(client.post(batch) == 200);
        CHECK(collector.terminate() ==
              "skyflare-collector took 3 requests, 7 bundles, 8 events; 1 duplicate bundle "
              "dropped, 0 requests refused, 0 requests put off");
    }
    RunningCollector again(folder.path());
    CHECK(again.post(batchOf({bundleOf("a", "d", 2), bundleOf("a", "d", 5), bundleOf("a", "d", 6)})) == 200);
    CHECK(again.terminate() ==
          "skyflare-collector took 1 request, 1 bundle, 1 event; 2 duplicate bundles dropped, "
          "0 requests refused, 0 requests put off");
    CHECK(eventsIn(folder / "events.jsonl") == Events{"a/d/1#1", "a/d/1#2", "a/d/3#1", "b/d/1#1", "a/e/1#1",
                                                      "a/d/2#1", "a/d/5#1", "a/d/4#1", "a/d/6#1"});
    const auto database = *Database::open(folder / "seen.sqlite", OpenMode::Write, {});
    CHECK(*database->number("SELECT count(*) FROM seen") == 3);
    CHECK(*database->number("SELECT last FROM seen WHERE database_id = 'd' AND app_instance_id = 'a'") == 6);

    REQUIRE(database->execute("UPDATE seen SET day = day - 93"));
    RunningCollector later(folder.path());
    CHECK(later.post(batchOf({bundleOf("b", "d", 1)})) == 200);
    CHECK(*database->number("SELECT count(*) FROM seen") == 1);
}

TEST_CASE("what is no batch is refused, and the next one is taken")
{
    const TemporaryFolder folder;
    folder.write("settings.json", R"({"measurement.upload.interval": 60})");
    RunningCollector collector(folder.path(),
                               {"--config", folder / "settings.json", "--max-body", "1000000"});
    const Bytes good = batchOf({bundleOf("a", "d", 1)});
    const Bytes packed = *gzip(good);
    const Bytes noEvents = BundleMessage::encode(bundleOf("a", "d", 1, 0));
    const std::string isPacked = "Content-Encoding: gzip\r\n";
    APMMeasurementBundle nameless = bundleOf("a", "d", 1);
    nameless.appId.clear();
    Bytes manyEvents = BundleMessage::encode(bundleOf("a", "d", 1));
    for (int i = 0; i < 400'000; ++i)
        manyEvents.insert(manyEvents.end(), {0x32, 0x00}); // one of no byte
    struct Row {
        const char *what;
        Bytes body;
        std::string headers;
        int status;
    };
    const Row rows[] = {
        {"garbage", Bytes(9, 0xff), "", 400},
        {"nothing", {}, "", 400},
        {"cut short", {good.begin(), good.end() - 5}, "", 400},
        {"no gzip", good, isPacked, 400},
        {"gzip cut short", {packed.begin(), packed.end() - 5}, isPacked, 400},
        {"a gzip bomb", *gzip(Bytes(50'000'000)), isPacked, 400},
        {"unknown packing", good, "Content-Encoding: br\r\n", 415},
        {"no app id", batchOf({nameless}), "", 400},
        {"countless bundles", BatchMessage::encode({}, std::vector<Bytes>(10'001, noEvents)), "", 400},
        {"countless events", BatchMessage::encode({}, {manyEvents}), "", 400},
        {"no index", batchOf({bundleOf("a", "d", 0)}), "", 400},
        {"an endless name", batchOf({bundleOf(std::string(300, 'a'), "d", 1)}), "", 400},
        {"one of two is wrong", batchOf({bundleOf("a", "d", 1), nameless}), "", 400},
    };
    for (const Row &row : rows) {
        CAPTURE(row.what);
        CHECK(collector.post(row.body, row.headers) == row.status);
    }
    RawClient tooLong(collector.port);
    tooLong.send("POST /a HTTP/1.1\r\nHost: x\r\nContent-Length: 1000001\r\n\r\n");
    CHECK(tooLong.readStatus() == 413); // before the body comes
    RawClient client(collector.port);
    CHECK(client.ask("GET", "/a") == 405);
    CHECK(client.ask("DELETE", "/health") == 405);
    CHECK(client.ask("GET", "/b") == 404);
    CHECK(client.ask("GET", "/config/app/?platform=linux") == 404);
    CHECK(client.ask("GET", "/config/app/1:2:linux:3?platform=linux&gmp_version=0.1.0") == 200);
    CHECK(client.body() == R"({"measurement.upload.interval":60})");
    CHECK(client.post(good) == 200); // on the same connection
    CHECK(eventsIn(folder / "events.jsonl") == Events{"a/d/1#1"});
    CHECK(RawClient(RunningCollector(folder / "other").port).ask("GET", "/config/app/1:2:linux:3") == 404);
    CHECK(runProgram({SKYFLARE_COLLECTOR, "--port", "65536"}) == 2);
    CHECK(runProgram({SKYFLARE_COLLECTOR, "--state-dir", folder.path().string()}) == 1); // another one has it
}
