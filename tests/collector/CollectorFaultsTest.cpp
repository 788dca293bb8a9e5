#include "tests/collector/CollectorFixture.h"

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <future>
#include <iterator>
#include <mutex>
#include <random>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

constexpr auto patience = 120s;

bool isPast(std::chrono::steady_clock::time_point start)
{
    return std::chrono::steady_clock::now() - start > patience;
}

void limitFileSize(const RunningCollector &collector, rlim_t bytes)
{
    const rlimit limit{bytes, RLIM_INFINITY};
    REQUIRE(prlimit(collector.process.pid(), RLIMIT_FSIZE, &limit, nullptr) == 0);
}

/// Phones that send their bundles one after the other, each again and again until the collector has it.
class Phones {
public:
    static constexpr int count = 6;
    static constexpr int eventsABundle = 20;

    explicit Phones(int port) : port_(port)
    {
        for (int phone = 0; phone < count; ++phone)
            sent_.push_back(std::async(std::launch::async, [this, phone] { return send(phone); }));
    }
    Phones(const Phones &) = delete;
    Phones &operator=(const Phones &) = delete;
    ~Phones() { isFinishing_ = true; }

    void setPort(int port) { port_ = port; }
    /// Whether that many more bundles are taken in the time that a test may take.
    bool waitForMore(int bundles)
    {
        std::unique_lock lock(mutex_);
        return taken_.wait_for(lock, patience,
                               [this, until = bundleCount_ + bundles] { return bundleCount_ >= until; });
    }
    /// Stops when each has had its last bundle taken. @return every event that was sent, sorted
    std::vector<std::string> finish()
    {
        isFinishing_ = true;
        std::vector<std::string> events;
        for (auto &sent : sent_)
            std::ranges::copy(sent.get(), std::back_inserter(events));
        std::ranges::sort(events);
        return events;
    }

private:
    std::atomic<int> port_;
    std::atomic<bool> isFinishing_ = false;
    std::mutex mutex_;
    std::condition_variable taken_;
    int bundleCount_ = 0;
    std::vector<std::future<std::vector<std::string>>> sent_; // last: they use the rest

    std::vector<std::string> send(int phone)
    {
        std::vector<std::string> events;
        const std::string instance = "phone" + std::to_string(phone);
        for (int index = 1; !isFinishing_; ++index) {
            const Bytes batch = batchOf({bundleOf(instance, "d", index, eventsABundle)});
            const auto start = std::chrono::steady_clock::now();
            while (RawClient(port_).post(batch) != 200)
                if (isPast(start))
                    return events;
            for (int number = 1; number <= eventsABundle; ++number)
                events.push_back(instance + "/d/" + std::to_string(index) + "#" + std::to_string(number));
            const std::scoped_lock lock(mutex_);
            ++bundleCount_;
            taken_.notify_all();
        }
        return events;
    }
};

} // namespace

TEST_CASE("killed, rotated and ended while phones send, it has every event in the files exactly once")
{
    const TemporaryFolder folder("/var/tmp"); // a disk: waiting for it is when it is killed most
    auto collector = std::make_unique<RunningCollector>(folder.path());
    Phones phones(collector->port);
    std::mt19937 random(20);
    for (int round = 0; round < 24; ++round) {
        CAPTURE(round);
        REQUIRE(phones.waitForMore(static_cast<int>(random() % 12)));
        if (round % 3 == 0)
            std::filesystem::rename(folder / "events.jsonl", folder / ("events." + std::to_string(round)));
        if (round % 6 == 0) {
            collector->process.signal(SIGHUP);
            REQUIRE(phones.waitForMore(3));
        }
        if (round % 5 == 4)
            collector->terminate();
        else
            collector->process.kill();
        collector = std::make_unique<RunningCollector>(folder.path());
        phones.setPort(collector->port);
    }
    const auto sent = phones.finish();
    collector->terminate();
    std::vector<std::string> stored;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
        if (entry.path().filename().string().starts_with("events."))
            std::ranges::copy(eventsIn(entry.path()), std::back_inserter(stored));
    }
    std::ranges::sort(stored);
    CHECK(stored == sent);
}

TEST_CASE("a new file is begun when the old one has been renamed, emptied or deleted")
{
    const TemporaryFolder folder;
    const auto file = folder / "events.jsonl";
    RunningCollector collector(folder.path());
    REQUIRE(collector.post(batchOf({bundleOf("a", "d", 1)})) == 200);
    std::filesystem::rename(file, folder / "events.1");
    REQUIRE(collector.post(batchOf({bundleOf("a", "d", 2)})) == 200);
    collector.process.signal(SIGHUP);
    const auto start = std::chrono::steady_clock::now();
    while (!std::filesystem::exists(file) && !isPast(start))
        REQUIRE(RawClient(collector.port).ask("GET", "/health") == 200);
    REQUIRE(collector.post(batchOf({bundleOf("a", "d", 3)})) == 200);
    CHECK(eventsIn(folder / "events.1") == std::vector<std::string>{"a/d/1#1", "a/d/2#1"});
    CHECK(eventsIn(file) == std::vector<std::string>{"a/d/3#1"});

    std::filesystem::resize_file(file, 0);
    REQUIRE(collector.post(batchOf({bundleOf("a", "d", 4)})) == 200);
    CHECK(eventsIn(file) == std::vector<std::string>{"a/d/4#1"});
    std::filesystem::remove(file);
    REQUIRE(collector.post(batchOf({bundleOf("a", "d", 5)})) == 200);
    CHECK(eventsIn(file) == std::vector<std::string>{"a/d/5#1"});
}

TEST_CASE("with a full disk it asks to come again, stores nothing by halves, and goes on when there is room")
{
    const TemporaryFolder folder;
    const auto file = folder / "events.jsonl";
    RunningCollector collector(folder.path());
    REQUIRE(collector.post(batchOf({bundleOf("a", "d", 1, 2000)})) == 200);
    const auto before = std::filesystem::file_size(file);
    struct Row {
        const char *database;
        rlim_t room;
        std::size_t events; ///< in the file afterwards
    };
    // No room for the lines; room for them, but none for the memory of bundles.
    for (const Row &row : {Row{"d", before + 1000, 2008}, Row{"e", 8192, 8}}) {
        CAPTURE(row.database);
        if (row.room < before)
            std::filesystem::resize_file(file, 0);
        const auto kept = std::filesystem::file_size(file);
        const Bytes batch = batchOf({bundleOf("a", row.database, 2, 8)});
        limitFileSize(collector, row.room);
        CHECK(collector.post(batch) == 503);
        CHECK(RawClient(collector.port).ask("GET", "/health") == 503);
        CHECK(std::filesystem::file_size(file) == kept);
        limitFileSize(collector, RLIM_INFINITY);
        CHECK(collector.post(batch) == 200);
        CHECK(RawClient(collector.port).ask("GET", "/health") == 200);
        CHECK(eventsIn(file).size() == row.events);
    }
}

TEST_CASE("clients that trickle, stall or hang up are let go, and others are served meanwhile")
{
    const TemporaryFolder folder;
    RunningCollector collector(folder.path(), {"--request-timeout", "1"});
    RawClient stalled(collector.port);
    CHECK(stalled.send("POST /a HTTP/1.1\r\nHost: x\r\nContent-Length: 1000\r\n\r\nabc"));
    RawClient silent(collector.port);
    RawClient trickling(collector.port);
    trickling.send("POST /a HTTP/1.1\r\nX: ");
    const auto start = std::chrono::steady_clock::now();
    while (trickling.send("x") && !isPast(start)) {
        const auto asked = std::chrono::steady_clock::now();
        const int status = RawClient(collector.port).ask("GET", "/health");
        // On a machine that does other things it may be one of the slow ones itself.
        REQUIRE((status == 200 || std::chrono::steady_clock::now() - asked > 900ms));
    }
    CHECK_FALSE(isPast(start));
    CHECK(stalled.readStatus() == 0);
    CHECK(silent.readStatus() == 0);
}
