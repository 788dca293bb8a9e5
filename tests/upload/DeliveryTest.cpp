// The built programs deliver every event once, whatever happens to the way between them, and to them.

#include "tests/fakes/FaultyWay.h"
#include "tests/fakes/RunningCollector.h"
#include "tests/upload/DeployedWatch.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <functional>
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

/// Deals all of its cards in any order before it deals one of them again.
template <typename Card> class Deck {
public:
    explicit Deck(std::vector<Card> cards) : cards_(std::move(cards)), next_(cards_.size()) {}

    Card deal(std::mt19937_64 &random)
    {
        if (next_ == cards_.size()) {
            std::shuffle(cards_.begin(), cards_.end(), random);
            next_ = 0;
        }
        return cards_[next_++];
    }

private:
    std::vector<Card> cards_;
    std::size_t next_;
};

enum class Who { Sender, Receiver };

/// Who dies, and when: at a stage of an upload, or as the sender has taken some photos.
struct Death {
    Who who = Who::Sender;
    std::optional<Stage> stage = {};
    std::size_t photos = 0;
};

std::vector<Death> allDeaths()
{
    std::vector<Death> deaths{{.photos = 1}, {.photos = 2}};
    for (std::size_t stage = 0; stage < FaultyWay::stageCount; ++stage)
        for (const Who who : {Who::Sender, Who::Receiver})
            deaths.push_back({who, static_cast<Stage>(stage)});
    return deaths;
}

std::vector<Fault> allFaults()
{
    std::vector<Fault> faults;
    for (std::size_t fault = 0; fault < FaultyWay::faultCount; ++fault)
        faults.push_back(static_cast<Fault>(fault));
    return faults;
}

/// How far an upload comes that meets this fault.
Stage lastStage(Fault fault)
{
    switch (fault) {
    case Fault::Reset:
    case Fault::Silence:
    case Fault::ServerError:
        return Stage::Arrived;
    case Fault::CutRequest:
        return Stage::HalfSent;
    default:
        return Stage::Answered;
    }
}

/// An evening on which both programs die again and again.
class Evening {
public:
    explicit Evening(std::uint64_t seed) : random_(seed)
    {
        folder_.write("settings.json", R"({"measurement.upload.max_events_per_bundle": 3,
                                           "measurement.upload.max_bundles": 2})");
        receiver_ = makeReceiver();
        way_.setCollectorPort(receiver_->port);
        watch_.deploy(way_.host(), way_.host());
        startSender();
    }

    void findNobody();
    void meetFault();
    void dieOnce();
    /// All is well again, until nothing waits any more.
    void drain();
    void checkWhatArrived() const;

private:
    const TemporaryFolder folder_{memoryFolder()};
    const DeployedWatch watch_;
    std::unique_ptr<RunningCollector> receiver_;
    std::unique_ptr<ChildProcess> sender_;

    std::mt19937_64 random_;
    Deck<Death> deaths_{allDeaths()};
    Deck<Fault> faults_{allFaults()};

    // Guarded by the mutex. Nothing: none is to come.
    std::mutex mutex_;
    std::condition_variable hasCome_;
    std::optional<Fault> fault_;
    bool isMet_ = false; ///< by the upload that is on its way
    std::optional<Death> death_;

    FaultyWay way_{{[this] { return nextFault(); }, [this](Stage stage) { didReach(stage); }}};

    [[nodiscard]] std::unique_ptr<RunningCollector> makeReceiver() const
    {
        return std::make_unique<RunningCollector>(
            folder_.path(), std::vector<std::string>{"--config", (folder_ / "settings.json").string()});
    }
    Fault nextFault();
    void didReach(Stage stage);
    template <typename What> void comeAbout(std::optional<What> &what, What which);
    void startSender(const std::string &armAfterSeconds = "0")
    {
        sender_ = watch_.watch(armAfterSeconds);
        REQUIRE(sender_->readLine()); // it has begun
    }
    void endSender();
    void startAnew();
    void waitUntil(const std::function<bool(const nlohmann::json &database)> &holds) const;
};

/// On the way's thread.
Fault Evening::nextFault()
{
    const std::scoped_lock lock(mutex_);
    isMet_ = fault_.has_value();
    return fault_.value_or(Fault::None);
}

/// On the way's thread.
void Evening::didReach(Stage stage)
{
    const std::scoped_lock lock(mutex_);
    if (isMet_ && fault_ && stage == lastStage(*fault_))
        fault_.reset();
    if (death_ && stage == death_->stage) {
        kill(death_->who == Who::Sender ? sender_->pid() : receiver_->process.pid(), SIGKILL);
        death_.reset();
    }
    hasCome_.notify_all();
}

/// Waits until an upload has met it.
template <typename What> void Evening::comeAbout(std::optional<What> &what, What which)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::unique_lock lock(mutex_);
    what = which;
    while (!hasCome_.wait_for(lock, 15s, [&] { return !what; })) {
        // It failed when it had recorded its last event: this one begins by staying away, and the next does
        // not.
        REQUIRE(std::chrono::steady_clock::now() < deadline);
        startAnew();
    }
}

void Evening::endSender()
{
    sender_->signal(SIGINT);
    sender_->readAll();
    CHECK(sender_->wait() == 0);
}

/// After a failure it would stay away for longer than this test lasts.
void Evening::startAnew()
{
    endSender();
    startSender();
}

void Evening::meetFault()
{
    comeAbout(fault_, faults_.deal(random_));
    while (sender_->waitForOutput(0s))
        REQUIRE(sender_->readLine());
    REQUIRE(sender_->readLine()); // another photo: by now the sender has had its answer
    startAnew();
}

void Evening::dieOnce()
{
    const Death death = deaths_.deal(random_);
    for (std::size_t photo = 0; photo < death.photos; ++photo)
        REQUIRE(sender_->readLine());
    if (death.stage)
        comeAbout(death_, death);
    if (death.who == Who::Sender) {
        sender_->kill();
        startSender();
    } else {
        receiver_->process.kill();
        receiver_ = makeReceiver();
        way_.setCollectorPort(receiver_->port);
        startAnew();
    }
}

void Evening::waitUntil(const std::function<bool(const nlohmann::json &database)> &holds) const
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (nlohmann::json database; database.is_null() || !holds(database); database = watch_.database())
        REQUIRE(std::chrono::steady_clock::now() < deadline);
}

void Evening::findNobody()
{
    waitUntil([](const auto &database) { return database.at("waiting_bundles") > 0; });
    way_.open();
    startAnew();
}

void Evening::drain()
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

void Evening::checkWhatArrived() const
{
    std::map<std::string, std::set<int>> numbers; ///< of events, by bundle
    std::set<std::pair<std::string, double>> moments;
    const auto lines = linesIn(folder_ / "events.jsonl");
    for (const auto &line : lines) {
        CHECK(numbers[line.at("bundle_key")].insert(line.at("event_number").get<int>()).second);
        CHECK(moments.emplace(line.at("name"), line.at("timestamp")).second);
    }
    for (const auto &[key, found] : numbers) {
        CAPTURE(key);
        CHECK(*found.rbegin() == static_cast<int>(found.size()));
    }
    const auto ledger = watch_.database().at("ledger");
    CHECK(ledger.at("uploaded") == lines.size());
    CHECK(ledger.at("bundled") == lines.size());
    CHECK(lines.size() > 20);
}

} // namespace

TEST_CASE("whatever happens on the way, and whoever dies twenty times, every event arrives once")
{
    const char *const given = std::getenv("SKYFLARE_TEST_SEED");
    const std::uint64_t seed = given ? std::strtoull(given, nullptr, 10) : std::random_device{}();
    MESSAGE("SKYFLARE_TEST_SEED=", seed);
    Evening evening(seed);
    evening.findNobody();
    for (int death = 0; death < 20; ++death) {
        CAPTURE(death);
        evening.meetFault();
        evening.dieOnce();
    }
    evening.drain();
    evening.checkWhatArrived();
}
