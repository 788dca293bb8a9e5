#include "analytics/pipeline/APMAnalyticsOptions.h"
#include "analytics/pipeline/APMConsoleMonitor.h"
#include "analytics/pipeline/APMOperationQueue.h"
#include "analytics/pipeline/APMPersistedSuite.h"
#include "analytics/pipeline/EventLedger.h"
#include "platform/base/Files.h"
#include "platform/linux/SystemRandom.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingMonitor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>

namespace skyflare {

namespace {

struct DefaultsFixture {
    TemporaryFolder folder;
    RecordingConsole console;
    UserDefaults defaults{folder / "suite.plist", console};
};

/// Counts how often it is handed something.
class CountingQueue final : public SerialQueue {
public:
    explicit CountingQueue(std::shared_ptr<SerialQueue> queue)
        : SerialQueue("target"), queue_(std::move(queue))
    {
    }
    int wakeUps = 0;

    void async(Work work) override
    {
        ++wakeUps;
        queue_->async(std::move(work));
    }
    [[nodiscard]] bool sync(const Work &work) override { return queue_->sync(work); }
    void asyncAfter(std::chrono::nanoseconds delay, Work work) override { queue_->asyncAfter(delay, work); }
    [[nodiscard]] bool isCurrent() const override { return queue_->isCurrent(); }

private:
    std::shared_ptr<SerialQueue> queue_;
};

struct QueueFixture {
    VirtualTime time;
    std::shared_ptr<CountingQueue> target = std::make_shared<CountingQueue>(time.makeSerialQueue("behind"));
    APMOperationQueue queue{target};
    std::string ran;

    bool add(char name)
    {
        return queue.addOperation([this, name] { ran += name; });
    }
};

} // namespace

TEST_CASE_FIXTURE(DefaultsFixture, "launch arguments decide, off before on, and later starts remember it")
{
    const std::pair<std::vector<const char *>, MonitorModes> starts[] = {
        {{"--", "-FIRDebugEnabled"}, {false, false}},
        {{"film.mp4", "-FIRDebugEnabled", "-APMAnalyticsVerboseLoggingEnabled"}, {true, true}},
        {{"--quiet"}, {true, true}},
        {{"-FIRAnalyticsDebugEnabled", "-noAPMAnalyticsDebugEnabled"}, {false, true}},
        {{"-FIRAnalyticsVerboseLoggingDisabled"}, {false, false}},
        {{}, {false, false}},
    };
    for (const auto &[arguments, expected] : starts) {
        UserDefaults reread(folder / "suite.plist", console);
        CHECK(decideMonitorModes(LaunchSwitches::in(arguments), reread) == expected);
    }
    CHECK(isLaunchArgument("-noFIRAnalyticsDebugEnabled"));
    CHECK_FALSE(isLaunchArgument("-FIRDebug"));
}

TEST_CASE("the monitor reports problems always, prints commentary when verbose, and keeps to one line")
{
    using Level = APMMonitor::Level;
    RecordingConsole console;
    VirtualTime time;
    for (const bool verbose : {false, true}) {
        APMConsoleMonitor monitor(console, time, {.debugMode = true, .verboseLogging = verbose});
        monitor.log(Level::Error, 22000,
                    "a\nb\x1B[31m\xC2\x85\xE2\x80\xA8"
                    "\xFF \xC3\xA4");
        monitor.log(Level::Debug, 1, "quiet");
    }
    const std::string problem = "<AppMeasurement> error 22000: a b [31m  \xEF\xBF\xBD \xC3\xA4";
    CHECK(console.reports() == std::vector<std::string>{problem, problem});
    CHECK(console.lines() == std::vector<std::string>{"<AppMeasurement> debug 1: quiet"});
}

TEST_CASE("the monitor reports a problem that comes again once a minute, and others at once")
{
    RecordingConsole console;
    VirtualTime time;
    APMConsoleMonitor monitor(console, time, {});
    const auto fail = [&monitor](int code) { monitor.log(APMMonitor::Level::Error, code, "disk full"); };
    for (int i = 0; i < 3; ++i) {
        fail(22000);
        fail(22001);
        time.advance(std::chrono::seconds(29));
    }
    fail(22000); // after 87 seconds
    const std::string line = "<AppMeasurement> error 22000: disk full";
    const std::string other = "<AppMeasurement> error 22001: disk full";
    CHECK(console.reports() == std::vector<std::string>{line, other, line + " (and 2 times before)"});
}

TEST_CASE_FIXTURE(QueueFixture, "operations wait for the resume, then run in order")
{
    REQUIRE(add('a'));
    REQUIRE(queue.addOperation([this] {
        ran += 'b';
        REQUIRE(add('d'));
    }));
    REQUIRE(add('c'));
    time.runUntilIdle();
    CHECK(ran.empty());
    queue.resume();
    time.runUntilIdle();
    CHECK(ran == "abcd");
    CHECK(target->wakeUps == 1);
    REQUIRE(add('e'));
    CHECK(queue.closeThen([this] { ran += '.'; }) == 0);
    CHECK_FALSE(add('f'));
    time.runUntilIdle();
    CHECK(ran == "abcde.");
    CHECK(target->wakeUps == 2);
}

TEST_CASE_FIXTURE(QueueFixture,
                  "hooks follow each operation and the last; what comes in meanwhile wakes nobody")
{
    using Counted = APMOperationQueue::Counted;
    std::string late = "c";
    APMOperationQueue *adding = nullptr;
    APMOperationQueue hooked(target, {[this] { ran += ','; },
                                      [&] {
                                          ran += ';';
                                          if (!std::exchange(late, "").empty())
                                              CHECK(adding->addOperation([this] { ran += 'c'; }));
                                      }});
    adding = &hooked;
    hooked.resume();
    REQUIRE(hooked.addOperation([this] { ran += 'a'; }));
    REQUIRE(hooked.addOperation([this] { ran += 'b'; }));
    time.runUntilIdle();
    CHECK(ran == "a,b,;c,;");
    CHECK(target->wakeUps == 1);
    REQUIRE(hooked.addOperation([] {}, Counted::No));
    REQUIRE(hooked.addOperation([] {}));
    CHECK(hooked.discard() == 1);
}

TEST_CASE("options come from the first sound file, and the configuration in it goes before all")
{
    TemporaryFolder folder;
    RecordingMonitor monitor;
    const std::filesystem::path folders[] = {folder / "etc", folder / "program"};
    const auto put = [&](const char *name, std::string_view inside) {
        const std::string text = "<plist version=\"1.0\"><dict>" + std::string(inside);
        CHECK(replaceFile(folder / name, Bytes(text.begin(), text.end())));
    };
    const auto load = [&] { return APMAnalyticsOptions::load(folders, monitor); };
    CHECK(load() == APMAnalyticsOptions());
    CHECK(monitor.takeLines().at(0).message.starts_with(
        "Mipeme App ID from MipemeService-Info.plist is empty. Please, define MIPEME_APP_ID in"
        " MipemeService-Info.plist for Analytics to work reliably. See"));

    put("program/MipemeService-Info.plist", "<key>MIPEME_APP_ID</key><string>1:2</string></dict></plist>");
    const PropertyList::Dictionary configuration{{"FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED", true}};
    const PropertyList info = PropertyList::Dictionary{
        {"FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED", false},
        {"FIREBASE_ANALYTICS_COLLECTION_ENABLED", std::string("NO")},
        {"FirebaseAutomaticScreenReportingEnabled", std::string("perhaps")},
        {"MIPEME_ANALYTICS_DEFAULT_ALLOW_AD_STORAGE", std::int64_t{0}},
        {"FIREBASE_ANALYTICS_CONFIGURATION", configuration},
    };
    CHECK(replaceFile(folder / "program/Info.plist", info.serialize()));
    put("etc/Info.plist", "");
    APMAnalyticsOptions expected;
    expected.appID = "1:2";
    expected.collectionEnabled = false;
    expected.collectionDeactivated = true;
    expected.allowAdStorage = false;
    CHECK(load() == expected);
    const auto lines = monitor.takeLines();
    REQUIRE(lines.size() == 2);
    CHECK(lines[0].message.find("etc/Info.plist") != std::string::npos);
    CHECK(lines[1].message.find("FirebaseAutomaticScreenReportingEnabled") != std::string::npos);

    put("etc/Info.plist", "</dict></plist>");
    CHECK(load().collectionEnabled);
}

TEST_CASE_FIXTURE(DefaultsFixture,
                  "the app instance id stays until a reset, and is made anew where it is none")
{
    SystemRandom random;
    APMPersistedSuite suite(defaults, random);
    defaults.setObject(std::string("0123456789ABCDEF0123456789abcdef"), "app_instance_id_after_reset");
    const std::string first = *suite.appInstanceID();
    CHECK((first.size() == 32 && first.find_first_not_of("0123456789abcdef") == std::string::npos));
    CHECK(*suite.appInstanceID() == first);
    CHECK(*suite.resetAppInstanceID() != first);
}

TEST_CASE("the ledger balances, and says what does not")
{
    using Entry = LedgerEntry;
    EventLedger ledger;
    ledger.count(Entry::Found, 10);
    ledger.count(Entry::Accepted, 6);
    ledger.count(Entry::Raised);
    ledger.countRefusal(EventLedger::RefusedWhat::Event, APMErrorCode::EventNameIsReserved,
                        FailureCode::Reserved);
    ledger.countRefusal(EventLedger::RefusedWhat::Part, APMErrorCode::ParameterLimitReached,
                        FailureCode::Valid);
    for (const Entry end : {Entry::Disabled, Entry::LimitedPublic, Entry::Failed})
        ledger.count(end);
    ledger.count(Entry::Stored, 2);
    ledger.count(Entry::Trimmed, 3);
    CHECK(ledger.tally().balance(1, 9));
    CHECK(ledger.tally().balance(0, 9).error().message == "events under way: counted 1, but there are 0");
    CHECK(ledger.tally().balance(1, 8).error().message == "rows that wait: counted 9, but there are 8");
    ledger.count(Entry::PartsRefused);
    CHECK_FALSE(ledger.tally().balance(1, 9));
    CHECK(std::ranges::count(ledger.tally().lines(), "  refused with error 13, EventNameIsReserved      1") ==
          1);
}

} // namespace skyflare
