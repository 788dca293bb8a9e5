// The built programs deliver every event once, whatever happens to the way between them, and to them.

#include "tests/fakes/FaultyWay.h"
#include "tests/fakes/RunningCollector.h"
#include "tests/watch/WatchFixture.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <future>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <set>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

using Fault = FaultyWay::Fault;
using Stage = FaultyWay::Stage;

constexpr auto patience = 120s;

/// That many cards, of which all kinds come in any order before one comes again.
template <typename Card>
std::vector<Card> deal(const std::vector<Card> &kinds, std::size_t count, std::mt19937_64 &random)
{
    std::vector<Card> cards;
    while (cards.size() < count) {
        const auto newOnes = cards.insert(cards.end(), kinds.begin(), kinds.end());
        std::shuffle(newOnes, cards.end(), random);
    }
    cards.resize(count);
    return cards;
}

enum class Who { Sender, Receiver };

/// What is to happen to an upload when it has come so far; with no stage, between two uploads.
struct Incident {
    std::optional<Stage> stage = {};
    Fault fault = Fault::None;
    std::optional<Who> dies = {};
};

const std::vector<Incident> faults{
    {Stage::Answered, Fault::None},       {Stage::Arrived, Fault::Reset},
    {Stage::HalfSent, Fault::CutRequest}, {Stage::Answered, Fault::LostAnswer},
    {Stage::Arrived, Fault::Silence},     {Stage::Answered, Fault::Drip},
    {Stage::Arrived, Fault::ServerError}, {Stage::Answered, Fault::NoContent},
};

std::vector<Incident> allDeaths()
{
    std::vector<Incident> deaths{{.dies = Who::Sender}, {.dies = Who::Receiver}};
    for (std::size_t stage = 0; stage < FaultyWay::stageCount; ++stage)
        for (const Who who : {Who::Sender, Who::Receiver})
            deaths.push_back({.stage = static_cast<Stage>(stage), .dies = who});
    return deaths;
}

/// Watches the simulated sky, in debug mode, and takes a photo of every burst: about one a second.
std::unique_ptr<ChildProcess> startWatching(const WatchFixture &fixture,
                                            const std::string &armAfterSeconds = "0")
{
    return std::make_unique<ChildProcess>(
        fixture.command({"--camera", "simulated:64x36@30", "--sensitivity", "extreme", "--frequency", "5",
                         "--arm-after=" + armAfterSeconds, "--json", "--quiet", "-FIRDebugEnabled"}));
}

/// An evening on which both programs die again and again.
class Evening {
public:
    Evening()
    {
        folder_.write("settings.json", R"({"measurement.upload.max_events_per_bundle": 3,
                                           "measurement.upload.max_bundles": 2})");
        startReceiver();
        watch_.deploy({{"MIPEME_ANALYTICS_COLLECTION_HOST", way_.host()},
                       {"MIPEME_ANALYTICS_CONFIGURATION_HOST", way_.host()}});
        startSender();
        // Its first uploads find nobody.
        waitUntil([](const auto &database) { return database.at("waiting_bundles") > 0; });
        way_.open();
        startAnew();
    }

    void meet(const Incident &fault)
    {
        comeAbout(fault);
        while (sender_->waitForOutput(0s))
            REQUIRE(sender_->readLine());
        REQUIRE(sender_->readLine()); // another photo: by now the sender has had its answer
        startAnew();
    }

    void die(const Incident &death)
    {
        if (death.stage)
            comeAbout(death);
        else
            REQUIRE(sender_->readLine()); // it has taken a photo
        if (death.dies == Who::Sender) {
            sender_->kill();
            startSender();
        } else {
            receiver_->process.kill();
            startReceiver();
            startAnew();
        }
    }

    /// All is well again, until nothing waits any more.
    void drain()
    {
        REQUIRE(sender_->readLine()); // a photo: something is newer than the last failure
        endSender();
        startSender("3600"); // it takes no photo
        waitUntil([](const auto &database) {
            return database.at("waiting_events") == 0 && database.at("waiting_bundles") == 0;
        });
        endSender();
        MESSAGE(receiver_->terminate());
    }

    void checkWhatArrived() const
    {
        std::map<std::string, std::set<int>> numbers; ///< of events, by bundle
        std::set<std::pair<std::string, double>> moments;
        const auto lines = linesIn(folder_ / "events.jsonl");
        for (const auto &line : lines) {
            CHECK(numbers[line.at("bundle_key")].insert(line.at("event_number").get<int>()).second);
            CHECK(moments.emplace(line.at("name"), line.at("timestamp")).second);
        }
        for (const auto &bundle : numbers) {
            CAPTURE(bundle.first);
            CHECK(*bundle.second.rbegin() == static_cast<int>(bundle.second.size()));
        }
        const auto ledger = watch_.status().at("database").at("ledger");
        CHECK(ledger.at("uploaded") == lines.size());
        CHECK(ledger.at("bundled") == lines.size());
        CHECK(lines.size() > 20);
    }

private:
    const TemporaryFolder folder_{memoryFolder()};
    WatchFixture watch_;
    std::unique_ptr<RunningCollector> receiver_;
    std::unique_ptr<ChildProcess> sender_;

    // Guarded by the mutex.
    std::mutex mutex_;
    std::condition_variable hasCome_;
    std::optional<Incident> incident_; ///< nothing: none is to come
    bool isMet_ = false;               ///< by the upload that is on its way

    FaultyWay way_{{[this] { return nextFault(); }, [this](Stage stage) { didReach(stage); }}};

    void startReceiver()
    {
        const std::vector<std::string> settings{"--config", folder_ / "settings.json"};
        receiver_ = std::make_unique<RunningCollector>(folder_.path(), settings);
        way_.setCollectorPort(receiver_->port);
    }

    void startSender(const std::string &armAfterSeconds = "0")
    {
        sender_ = startWatching(watch_, armAfterSeconds);
        REQUIRE(sender_->readLine()); // it has begun
    }

    void endSender()
    {
        sender_->signal(SIGINT);
        sender_->readAll();
        CHECK(sender_->wait() == 0);
    }

    /// After a failure it would stay away for longer than this test lasts.
    void startAnew()
    {
        endSender();
        startSender();
    }

    /// Asks for the sender's database until that holds.
    void waitUntil(const auto &holds) const
    {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        for (nlohmann::json database; database.is_null() || !holds(database);
             database = watch_.status().at("database"))
            REQUIRE(std::chrono::steady_clock::now() < deadline);
    }

    /// Waits until an upload has met it.
    void comeAbout(const Incident &incident)
    {
        constexpr int photosThatAnUploadFollows = 10;
        const auto deadline = std::chrono::steady_clock::now() + patience;
        std::unique_lock lock(mutex_);
        incident_ = incident;
        for (int photos = 0; !hasCome_.wait_for(lock, 20ms, [this] { return !incident_; });) {
            REQUIRE(std::chrono::steady_clock::now() < deadline);
            if (!sender_->waitForOutput(0s))
                continue;
            REQUIRE(sender_->readLine());
            if (++photos < photosThatAnUploadFollows)
                continue;
            // Its predecessor failed with its last event: this one stays away, and its successor does not.
            startAnew();
            photos = 0;
        }
    }

    /// On the way's thread.
    Fault nextFault()
    {
        const std::scoped_lock lock(mutex_);
        isMet_ = incident_.has_value();
        return isMet_ ? incident_->fault : Fault::None;
    }

    /// On the way's thread.
    void didReach(Stage stage)
    {
        const std::scoped_lock lock(mutex_);
        if (!isMet_ || !incident_ || stage != incident_->stage)
            return;
        if (incident_->dies)
            kill(*incident_->dies == Who::Sender ? sender_->pid() : receiver_->process.pid(), SIGKILL);
        incident_.reset();
        hasCome_.notify_all();
    }
};

} // namespace

TEST_CASE("a program ends in time while its upload hangs, and has kept what came last")
{
    const HttpServer server([](const HttpServer::Request &) {
        return HttpServer::Answer{.bytes = {}, .then = HttpServer::Then::StayOpen};
    });
    WatchFixture fixture;
    fixture.deploy({{"MIPEME_ANALYTICS_COLLECTION_HOST", server.url("")}});
    const auto watch = startWatching(fixture);
    REQUIRE(server.waitForRequests(1));
    const auto start = std::chrono::steady_clock::now();
    watch->signal(SIGINT);
    watch->readAll();
    CHECK(watch->wait() == 0);
    CHECK(std::chrono::steady_clock::now() - start < 55s); // a request's own time limit is a minute
    CHECK(watch->errors().empty());
    const auto kept = WatchFixture::output(fixture.command({"--analytics-show", "--json"}));
    CHECK(std::ranges::any_of(objectsOfType(kept, "event"),
                              [](const auto &event) { return event.at("name") == "stop_capture"; }));
}

TEST_CASE("whatever happens on the way, and whoever dies twenty times, every event arrives once")
{
    const char *const given = std::getenv("SKYFLARE_TEST_SEED");
    const std::uint64_t seed = given ? std::strtoull(given, nullptr, 10) : std::random_device{}();
    MESSAGE("SKYFLARE_TEST_SEED=", seed);
    std::mt19937_64 random(seed);
    const auto met = deal(faults, 20, random);
    const auto deaths = deal(allDeaths(), 20, random);
    const auto spendEvening = [&](std::size_t first, std::size_t end) {
        Evening evening;
        for (std::size_t round = first; round < end; ++round) {
            CAPTURE(round);
            evening.meet(met[round]);
            evening.die(deaths[round]);
        }
        evening.drain();
        evening.checkWhatArrived();
    };
    // Two at once, each of which mostly waits for its next photo.
    auto other = std::async(std::launch::async, spendEvening, 0, 10);
    spendEvening(10, 20);
    other.get();
}
