// How many waiting events a second become bundles in the queue, and what 1,000 of them take on the wire.

#include "analytics/proto/BatchMessage.h"
#include "analytics/proto/EventMessage.h"
#include "analytics/store/Gzip.h"
#include "analytics/worker/UploadStore.h"
#include "bench/BareSqlite.h"
#include "bench/Machine.h"
#include "bench/StrictMonitor.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace skyflare::bench {

namespace {

constexpr std::int64_t backlog = 100'000;
constexpr const char *appID = "1:1234567890:linux:321abc456def7890";

/// As the app logs a photo.
APMEvent photo(std::int64_t number)
{
    const double moment = 1.7e9 + 0.731 * static_cast<double>(number);
    char text[32];
    std::snprintf(text, sizeof text, "2023-11-14 %02d:%02d:%02d.%03d", int(number / 3600 % 24),
                  int(number / 60 % 60), int(number % 60), int(number * 731 % 1000));
    return {"app",
            "catch_photo",
            moment,
            moment - 0.731,
            {{"difference", APMValue(0.1 + 0.0007 * static_cast<double>(number * 37 % 1000))},
             {"timestamp", APMValue(std::string(text))},
             {"totalPhotos", APMValue(number)}}};
}

APMAppData appData()
{
    return {.appId = appID,
            .appInstanceId = "0123456789abcdef0123456789abcdef",
            .appVersion = "0.1.0",
            .platform = "linux",
            .osVersion = "Debian GNU/Linux 12",
            .deviceModel = "Pine64 PinePhone",
            .language = "de-CH"};
}

/// The engine's way to its database, with a full backlog in it.
struct Backlog {
    WorkFolder folder;
    StrictMonitor monitor;
    NoConfig config;
    SystemClock clock;
    SystemRandom random;
    EventLedger ledger;
    DatabaseKeeper databases{{monitor, clock, ledger, [this](const StoreLimits &limits) {
                                  return APMDatabase::open(folder.path() / measurementDatabaseName,
                                                           {monitor, clock, config, {}}, limits);
                              }}};
    EventJournal journal{{databases, monitor, clock, ledger}};
    UploadStore store{{journal, databases, monitor, clock, random}};

    Backlog()
    {
        journal.setAppData(appData());
        for (std::int64_t number = 0; number < backlog; ++number) {
            require(journal.begin().has_value(), "no transaction");
            ledger.count(LedgerEntry::Accepted);
            journal.writeEvent(photo(number), IsRealtime::No);
            journal.commitIfDue();
        }
        journal.commit();
        require(ledger.tally().count(LedgerEntry::Stored) == backlog, "an event was not stored");
    }
};

struct Bundling {
    double seconds = 0;
    double processorSeconds = 0;
    double longest = 0; ///< seconds: of one bundle, which is one transaction
    std::uint64_t memory = 0;
    std::size_t bundles = 0;
};

Bundling bundleAll(const BundleLimits &limits)
{
    Backlog waiting;
    Bundling bundling;
    forgetPeak();
    const std::uint64_t before = currentMemory();
    std::int64_t taken = 0;
    for (std::int64_t events = 1; events > 0; taken += events) {
        const double start = now();
        const double processorStart = threadSeconds();
        events = *waiting.store.bundleOldest(appID, limits);
        const double took = now() - start;
        bundling.seconds += took;
        bundling.processorSeconds += threadSeconds() - processorStart;
        bundling.longest = std::max(bundling.longest, took);
        bundling.bundles += events > 0 ? 1 : 0;
    }
    bundling.memory = peakMemory() - std::min(before, peakMemory());
    require(taken == backlog, "not every event went into a bundle");
    require(waiting.ledger.tally().balance({.bundledEvents = backlog}).has_value(), "the ledger");
    return bundling;
}

/// The shortest way that SQLite and zlib have to read as many rows, compress and write them together, and
/// delete them, in as many transactions.
struct Bare {
    double seconds = 0;
    double processorSeconds = 0;
};

Bare bareBundling(const Bundling &as)
{
    const WorkFolder folder;
    const auto database = *Database::open(folder.path() / "bare", OpenMode::Write, std::chrono::seconds(0));
    require(database
                ->execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                          "CREATE TABLE t (name, timestamp, fingerprint, data, is_realtime);"
                          "CREATE TABLE q (data)")
                .has_value(),
            "no yardstick");
    require(database->execute("BEGIN").has_value(), "no yardstick");
    for (std::int64_t number = 0; number < backlog; ++number) {
        const Bytes data = EventMessage::encode(photo(number));
        auto insert = database->prepare("INSERT INTO t VALUES ('catch_photo', 1.5, 7, ?, 0)");
        require(insert && insert->bind(1, std::span(data)) && insert->step(), "no yardstick");
    }
    require(database->execute("COMMIT").has_value(), "no yardstick");
    const auto most = static_cast<std::int64_t>((backlog + as.bundles - 1) / as.bundles);
    const double start = now();
    const double processorStart = threadSeconds();
    for (std::size_t bundle = 0; bundle < as.bundles; ++bundle) {
        Bytes together;
        require(database->execute("BEGIN").has_value(), "no yardstick");
        {
            auto rows = database->prepare("SELECT data FROM t ORDER BY rowid LIMIT ?");
            require(rows && rows->bind(1, most), "no yardstick");
            while (*rows->step()) {
                const auto data = *rows->bytes(0);
                together.insert(together.end(), data.begin(), data.end());
            }
        }
        const Bytes packed = *gzip(together);
        auto insert = database->prepare("INSERT INTO q VALUES (?)");
        require(insert && insert->bind(1, std::span(packed)) && insert->step(), "no yardstick");
        auto remove = database->prepare("DELETE FROM t WHERE rowid <= ?");
        require(remove && remove->bind(1, most * static_cast<std::int64_t>(bundle + 1)) && remove->step(),
                "no yardstick");
        require(database->execute("COMMIT").has_value(), "no yardstick");
    }
    return {now() - start, threadSeconds() - processorStart};
}

double eventsASecond(const std::vector<double> &seconds)
{
    return static_cast<double>(backlog) / median(seconds);
}

void measureBundling(Table &table, const char *what, const BundleLimits &limits)
{
    std::vector<double> seconds;
    std::vector<double> processor;
    std::vector<double> bares;
    std::vector<double> bareProcessor;
    std::vector<double> longest;
    Bundling last;
    for (int round = 0; round < 7; ++round) {
        last = bundleAll(limits);
        seconds.push_back(last.seconds);
        processor.push_back(last.processorSeconds);
        longest.push_back(last.longest);
        const Bare bare = bareBundling(last);
        bares.push_back(bare.seconds);
        bareProcessor.push_back(bare.processorSeconds);
    }
    const double speed = eventsASecond(seconds);
    const double bare = eventsASecond(bares);
    const std::string bundles = std::to_string(last.bundles) + " bundles";
    table.add({std::string("100,000 waiting events into bundles, ") + what, rows(speed),
               "bare SQLite and zlib: " + rows(bare), ratio(speed / bare), ">= 150000 rows/s",
               speed >= 150'000});
    const double alone = eventsASecond(processor);
    table.add({"the same by processor time, whatever else the machine does", rows(alone),
               "bare: " + rows(eventsASecond(bareProcessor)), ratio(alone / eventsASecond(bareProcessor)),
               ">= 150000 rows/s", alone >= 150'000});
    const double slowest = *std::ranges::max_element(longest);
    table.add({"the longest transaction of that, of seven times",
               duration(slowest),
               bundles,
               {},
               "<= 50 ms",
               slowest <= 0.05});
    table.add({"most memory over that before",
               megabytes(last.memory),
               bundles,
               {},
               "<= 4 MB",
               last.memory <= 4'000'000});
}

struct Compressed {
    std::size_t bytes = 0;
    double seconds = 0;
};

Compressed compressed(const Bytes &plain)
{
    std::vector<double> seconds;
    std::size_t size = 0;
    for (int round = 0; round < 9; ++round) {
        const double start = now();
        size = gzip(plain)->size();
        seconds.push_back(now() - start);
    }
    return {size, median(seconds)};
}

/// The same as one would write them by hand, what they share once.
std::string asJson(const APMMeasurementBundle &bundle)
{
    nlohmann::ordered_json events = nlohmann::ordered_json::array();
    for (const APMEvent &event : bundle.events) {
        nlohmann::ordered_json parameters;
        for (const APMParameter &each : event.parameters)
            std::visit(
                [&](const auto &value) {
                    if constexpr (!std::is_same_v<std::decay_t<decltype(value)>, APMValue::Array>)
                        parameters[each.name] = value;
                },
                each.value.held());
        events.push_back({{"name", event.name},
                          {"origin", event.origin},
                          {"timestamp", event.timestamp},
                          {"previous_timestamp", event.previousTimestamp},
                          {"params", std::move(parameters)}});
    }
    const APMAppData &app = bundle.metadata.app;
    return nlohmann::ordered_json{{"app_id", bundle.appId},        {"database_id", bundle.databaseId},
                                  {"index", bundle.index},         {"app_instance_id", app.appInstanceId},
                                  {"app_version", app.appVersion}, {"platform", app.platform},
                                  {"os_version", app.osVersion},   {"device_model", app.deviceModel},
                                  {"language", app.language},      {"events", std::move(events)}}
        .dump();
}

void measureWire(Table &table)
{
    APMMeasurementBundle bundle;
    bundle.appId = appID;
    bundle.databaseId = "3f2a9c0d5b7e4f18a6c1d2e3f4a5b6c7";
    bundle.index = 7;
    bundle.metadata.app = appData();
    for (std::int64_t number = 0; number < 1'000; ++number)
        bundle.events.push_back(photo(number));
    bundle.startTimestamp = bundle.events.front().timestamp;
    bundle.endTimestamp = bundle.events.back().timestamp;
    const Bytes batch = BatchMessage::encode({1.7e9, "0.1.0", false}, {BundleMessage::encode(bundle)});
    const std::string text = asJson(bundle);
    const Bytes json(text.begin(), text.end());
    const auto wire = compressed(batch);
    const auto jsonPacked = compressed(json);
    const auto kilobytes = [](std::size_t bytes) {
        char out[32];
        std::snprintf(out, sizeof out, "%.1f kB", static_cast<double>(bytes) / 1000);
        return std::string(out);
    };
    const auto add = [&](const char *what, const std::string &beside, std::size_t than) {
        table.add({what, kilobytes(wire.bytes), beside + ": " + kilobytes(than),
                   ratio(static_cast<double>(wire.bytes) / static_cast<double>(than)),
                   "compressed in " + duration(wire.seconds), true});
    };
    add("1,000 typical events on the wire, gzip", "not compressed", batch.size());
    add("the same", "as JSON", json.size());
    add("the same", "as JSON, gzip", jsonPacked.bytes);
}

int run()
{
    Table table("Bundles");
    measureBundling(table, "as shipped (64 KiB a batch)", {});
    measureBundling(table, "1 MiB a batch", {.events = 1'000, .batchBytes = 1U << 20U});
    measureWire(table);
    table.print();
    return EXIT_SUCCESS;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
