// Weeks of one installation, with calls of every kind, chosen at random: what is stored, uploaded and
// received agrees at every moment.

#include "tests/analytics/RandomNetwork.h"
#include "tests/fakes/EngineInFolder.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <numeric>
#include <set>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

class Weeks {
public:
    explicit Weeks(std::uint64_t seed) : random_(seed)
    {
        engine_.options.appID = "1:2:linux:3";
        engine_.options.collectionHost = "https://collect.example.org";
        engine_.options.configurationHost = "https://settings.example.org";
        engine_.transport = &network_;
        engine_.network = &network_;
        begin();
    }
    ~Weeks() { engine_.end(); }

    void step();
    /// All is well again, until nothing waits any more.
    void drain();
    [[nodiscard]] int duplicates() const { return network_.duplicates; }

private:
    RandomCaller random_;
    EngineInFolder engine_;
    RandomNetwork network_{engine_.time, random_};
    std::unique_ptr<TemporaryFolder> killed_; ///< what an engine left that was killed
    std::set<std::int64_t> logged_;           ///< numbers of events while collection was on
    std::int64_t nextNumber_ = 0;
    std::string mood_;
    bool isOn_ = true;

    void begin()
    {
        network_.begin();
        // One that is recorded in any case, so that the ledger of the runs before is there.
        engine_.start().logEventWithOrigin("auto", "_start", {},
                                           {.isPublicEvent = IsPublicEvent::No, .ignoreEnabled = true});
        engine_.time.runUntilIdle();
    }
    void logEvents();
    void pass()
    {
        const std::size_t longest = random_.oneOf<std::size_t>({1, 20, 60, 3'600, 7'200, 86'400});
        engine_.time.advance(std::chrono::milliseconds(random_.below(longest * 1'000)));
    }
    void setClock()
    {
        engine_.clock.setAheadBy += random_.oneOf({-1.0, 1.0}) * random_.oneOf({3'000.0, 90'000.0, 3e6});
    }
    void callAnything() { random_.callOnce(engine_.analytics()); }
    void restart()
    {
        network_.die();
        CHECK(engine_.end());
        begin();
    }
    void kill()
    {
        network_.die();
        killed_ = std::make_unique<TemporaryFolder>(memoryFolder());
        std::filesystem::copy(engine_.folder.path(), killed_->path(),
                              std::filesystem::copy_options::recursive);
    }
    void killAtUpload()
    {
        network_.atUpload = [this] { kill(); };
    }
    void beginWithWhatIsLeft();
    void setCollection(bool on)
    {
        if (std::exchange(isOn_, on) != on)
            network_.forget();
        engine_.analytics().setAnalyticsCollectionEnabled(on);
    }
    void toggleCollection() { setCollection(!isOn_); }
    void toggleNetwork() { network_.setUp(!network_.isUp); }
    void reset()
    {
        network_.forget();
        mood_.clear();
        engine_.analytics().resetAnalyticsData();
    }
    void check();
};

void Weeks::logEvents()
{
    if (isOn_ && random_.isOne(3)) {
        mood_ = random_.oneOf<std::string>({"calm", "glad", "tired"});
        engine_.analytics().setUserPropertyString(PropertyList(mood_), "mood");
    }
    for (std::size_t count = random_.below(12); count > 0; --count) {
        PropertyList::Dictionary parameters{{"number", nextNumber_}, {"mood", mood_}};
        if (random_.isOne(6))
            parameters.insert_or_assign("extend_session", std::int64_t{1});
        if (isOn_)
            logged_.insert(nextNumber_);
        ++nextNumber_;
        engine_.analytics().logEventWithName(random_.oneOf<std::string>({"tap", "look", "buy_it"}),
                                             std::move(parameters));
    }
}

void Weeks::beginWithWhatIsLeft()
{
    engine_.end();
    std::filesystem::remove_all(engine_.folder.path());
    std::filesystem::copy(killed_->path(), engine_.folder.path(), std::filesystem::copy_options::recursive);
    killed_.reset();
    begin();
}

void Weeks::step()
{
    struct Kind {
        std::size_t weight;
        void (Weeks::*run)();
    };
    static constexpr Kind kinds[] = {{20, &Weeks::logEvents},       {20, &Weeks::pass},
                                     {6, &Weeks::callAnything},     {1, &Weeks::setClock},
                                     {2, &Weeks::restart},          {2, &Weeks::kill},
                                     {2, &Weeks::killAtUpload},     {2, &Weeks::toggleNetwork},
                                     {1, &Weeks::toggleCollection}, {1, &Weeks::reset}};
    std::size_t chosen = random_.below(57);
    const Kind *kind = kinds;
    for (; chosen >= kind->weight; ++kind)
        chosen -= kind->weight;
    (this->*kind->run)();
    check();
}

void Weeks::check()
{
    engine_.time.runUntilIdle();
    while (killed_)
        beginWithWhatIsLeft();
    CHECK(engine_.balance() == "balanced");
    // One may be thrown away as stale while it is on its way.
    const std::uint64_t uploaded = engine_.count(LedgerEntry::Uploaded);
    CHECK(uploaded <= network_.acknowledged);
    CHECK(network_.acknowledged <= uploaded + engine_.count(LedgerEntry::QueueStale));
}

void Weeks::drain()
{
    network_.isGood = true;
    network_.atUpload = {};
    network_.setUp(true);
    setCollection(true);
    engine_.analytics().applicationWillResignActive(); // no event comes by itself any more
    for (int days = 0; days < 20 && (days == 0 || engine_.waiting() > 0); ++days) {
        engine_.analytics().logEventWithName("tap", {});
        engine_.time.advance(24h);
        check();
    }
    CHECK(engine_.waiting() == 0);
    std::size_t missing = 0;
    for (const std::int64_t number : logged_)
        missing += network_.numbers.erase(number) == 0 ? 1 : 0;
    CHECK(network_.numbers.empty()); // of those that were logged while nothing is to be recorded
    const EventTally tally = engine_.tally();
    std::uint64_t gone = 0;
    for (const auto entry : {LedgerEntry::LimitedAll, LedgerEntry::Trimmed, LedgerEntry::Stale,
                             LedgerEntry::Wiped, LedgerEntry::QueueStale, LedgerEntry::QueueWiped})
        gone += tally.count(entry);
    CHECK(missing <= gone);
    for (const auto entry : {LedgerEntry::Failed, LedgerEntry::Abandoned, LedgerEntry::Found,
                             LedgerEntry::Lost, LedgerEntry::QueueFound, LedgerEntry::QueueLost})
        CHECK(tally.count(entry) == 0);
}

} // namespace

TEST_CASE("through weeks of anything every event is received once, or the ledger says why not")
{
    std::vector<std::uint64_t> seeds(20);
    std::iota(seeds.begin(), seeds.end(), 1);
    if (const char *const more = std::getenv("SKYFLARE_TEST_SEED"))
        seeds.push_back(std::strtoull(more, nullptr, 10));
    int duplicates = 0;
    for (const std::uint64_t seed : seeds) {
        CAPTURE(seed);
        Weeks weeks(seed);
        for (int step = 0; step < 300; ++step) {
            CAPTURE(step);
            weeks.step();
        }
        weeks.drain();
        duplicates += weeks.duplicates();
    }
    CHECK(duplicates > 100);
}
