#include "analytics/sessions/SessionRecord.h"
#include "tests/analytics/EngineFixture.h"

#include <sstream>
#include <thread>

namespace skyflare {

namespace {

using FIR = FIRAnalytics;
using Values = PropertyList::Dictionary;

/// An engine whose uptime is that of the test.
struct SessionFixture : EngineFixture {
    SessionFixture() { clock.haste = 0; }

    /// Does what stands there, one thing after the other. "start", "end": the program; "on", "off": the app
    /// is active; "+60": seconds pass; "@Main": a controller appears; "=Help": the app says what is shown;
    /// "e": an event.
    /// @return what was stored since the last call
    Texts play(const std::string &script)
    {
        std::istringstream steps(script);
        for (std::string step; steps >> step; time.runUntilIdle()) {
            const std::string what = step.substr(1);
            if (step == "start")
                start();
            else if (step == "end")
                end();
            else if (step == "on" || step == "off")
                step == "on" ? FIR::applicationDidBecomeActive() : FIR::applicationWillResignActive();
            else if (step[0] == '+')
                time.advance(std::chrono::round<std::chrono::milliseconds>(
                    std::chrono::duration<double>(std::stod(what))));
            else if (step[0] == '@')
                FIR::viewDidAppear(what, std::hash<std::string>()(what));
            else
                FIR::logEventWithName(step[0] == '=' ? "screen_view" : step,
                                      step[0] == '=' ? Values{{"screen_name", text(what)}} : Values());
        }
        return takeStored();
    }
};

} // namespace

TEST_CASE_FIXTURE(SessionFixture, "a session goes on after 29 minutes, and another one begins after 31")
{
    CHECK(play("start before on +10 e") == Texts{"auto:_f", "before", "auto:_s _sid=1700000000 _sno=1", "e"});
    CHECK(number("SELECT count(*) FROM raw_events JOIN raw_events_metadata USING (metadata_fingerprint) "
                 "WHERE instr(metadata, CAST('_sid' AS BLOB))") == 1); // "e" alone
    CHECK(session() == "1700000000");
    CHECK(play("off +1740 on") == Texts{"auto:_e _et=10000"});
    CHECK(play("off +1860 on off") ==
          Texts{"auto:_e _et=0", "auto:_s _sid=1700003610 _sno=2", "auto:_e _et=0"});
    CHECK(play("end start e +1740 on") == Texts{"e"}); // another process, and the same session
    CHECK(session() == "1700003610");
    clock.setAheadBy = -7'200;
    CHECK(play("off end") == Texts{"auto:_e _et=0"});
    clock.setAheadBy = 0;
    CHECK(play("start on") == Texts{"auto:_s _sid=1700005350 _sno=3"});
    FIR::setSessionTimeoutInterval(0);
    CHECK(play("off on") == Texts{"auto:_e _et=0"});
    CHECK(play("off +1 on") == Texts{"auto:_e _et=0", "auto:_s _sid=1700005351 _sno=4"});
}

TEST_CASE_FIXTURE(SessionFixture, "engagement is by uptime, an hour at most, and reported every hour")
{
    int fired = 0;
    const auto observation =
        notificationCenter.addObserver("kAPMSessionReporterEngagementTimerDidFire", [&] { ++fired; });
    CHECK(play("start on +3599").size() == 2);
    CHECK(play("+1") == Texts{"auto:_e _et=3600000"});
    clock.setAheadBy = -86'400;
    CHECK(play("on +1.5 off +7200 end") == Texts{"auto:_e _et=1500"});
    CHECK(fired == 1);
    settings = APMRemoteConfig(Values{{"measurement.session.event_user_engagement_interval", 0.0}});
    CHECK(play("start on").size() == 1);
    CHECK(play("+7200 off end") == Texts{"auto:_e _et=3600000"});
    CHECK(fired == 1);
}

TEST_CASE_FIXTURE(SessionFixture, "what tells of engagement again may say so, or take its place")
{
    struct Row {
        bool efficient, removed, tracked;
        Texts onChange, onResign;
    };
    const std::string engaged = "auto:_e _et=5000 _sc=A _si=1";
    const std::string engagedRedundant = "auto:_e _et=5000 _fr=1 _sc=A _si=1";
    const std::string view = "auto:_vs _sc=B _si=2 _pc=A _pi=1 _et=5000";
    const std::string last = "auto:_e _et=3000 _sc=B _si=2";
    const std::string lastRedundant = "auto:_e _et=3000 _fr=1 _sc=B _si=2";
    const std::string away = "auto:_ab _sc=B _si=2";
    const std::string awayWithTime = "auto:_ab _et=3000 _sc=B _si=2";
    const std::vector<Row> table{
        {false, false, false, {engaged, view}, {last}},
        {false, true, false, {engaged, view}, {last}},
        {true, false, false, {engagedRedundant, view}, {last}},
        {true, true, false, {view}, {last}},
        {false, false, true, {engaged, view}, {last, away}},
        {false, true, true, {engaged, view}, {away}},
        {true, false, true, {engagedRedundant, view}, {lastRedundant, awayWithTime}},
        {true, true, true, {view}, {awayWithTime}},
    };
    for (const Row &row : table) {
        CAPTURE(&row - table.data());
        settings = APMRemoteConfig(
            Values{{"measurement.collection.efficient_engagement_reporting_enabled", row.efficient},
                   {"measurement.collection.redundant_engagement_removal_enabled", row.removed},
                   {"measurement.lifecycle.app_backgrounded_tracking", row.tracked}});
        play("start on @A");
        CHECK(play("+5 @B") == row.onChange);
        CHECK(play("+3 off") == row.onResign);
        CHECK(play("on +0.999 @C") == Texts{"auto:_vs _sc=C _si=3 _pc=B _pi=2 _et=999"});
        play("+1740 off end +1740"); // in which the session does not grow too old
    }
    CHECK(number("SELECT lifetime_count FROM events WHERE name = '_s'") == 1);
}

TEST_CASE_FIXTURE(SessionFixture, "events carry the screen that is shown, however it is shown")
{
    switches.verboseLogging = true;
    play("start on");
    FIR::setScreenName("Too early", {});
    CHECK(told("25014") == 1);
    CHECK(play("e @skyflare.Main @skyflare.Main e") ==
          Texts{"e", "auto:_vs _sc=Main _si=1", "e _sc=Main _si=1"});
    CHECK(told("screen class: \"skyflare.Main\", \"Main\"") == 1);
    CHECK(told("25011") == 1);
    play("+2");
    FIR::setScreenName("Night", {});
    FIR::setScreenName("Night", "Main");
    CHECK(told("25015") == 1);
    FIR::setScreenName("", {});
    std::thread([] { FIR::setScreenName("Elsewhere", {}); }).join();
    CHECK(told("25013") == 1);
    log("screen_view", {{"a", true}, {"screen_class", text("Popup")}, {"screen_name", text("Help")}});
    log("screen_view", {{"screen_class", 1.0}, {"screen_name", text("")}});
    CHECK(play("@Gallery @skyflare.Main") ==
          Texts{"auto:_e _et=2000 _sc=Main _si=1",
                "_vs _sn=Night _sc=Main _si=2 _pc=Main _pi=1 _et=2000 _mst=1",
                "_vs a=1 _sn=Help _sc=Popup _si=3 _pn=Night _pc=Main _pi=2 _mst=1",
                "_vs _err=4 _ev=screen_name _el=0 _sc=Main _si=4 _pn=Help _pc=Popup _pi=3 _mst=1",
                "auto:_vs _sc=Gallery _si=5 _pc=Main _pi=4", "auto:_vs _sc=Main _si=6 _pc=Gallery _pi=5"});
    analytics().logEventWithOrigin("abc+gtm", "e", {{"_sn", text("Its own")}});
    CHECK(play("off @Settings =Hidden e") ==
          Texts{"abc+gtm:e _sn=Its own", "auto:_e _et=0 _sc=Main _si=6", "e _sn=Hidden _sc=Settings _si=8"});
    CHECK(told("25017") == 2);
    CHECK(count(LedgerEntry::Refused) == 1);
    end();

    options.automaticScreenReportingEnabled = false;
    play("start on @Main screen_view");
    FIR::setScreenName("Night", {});
    CHECK(told("25016") == 1);
    CHECK(told("25018") == 1);
    CHECK(play("=Help") == Texts{"_vs _sn=Help _si=1 _mst=1"});
}

TEST_CASE_FIXTURE(SessionFixture, "an event begins or extends a session in the background when it asks to")
{
    const auto extend = [&](PropertyList value) { log("e", {{"extend_session", std::move(value)}}); };
    play("start");
    extend(std::int64_t{1});
    CHECK(takeStored() == Texts{"auto:_s _sid=1700000000 _sno=1", "e extend_session=1"});
    for (const PropertyList &value : {PropertyList(std::int64_t{2}), text("1"), PropertyList(1.5)})
        extend(value);
    CHECK(
        told("extend_session is a reserved parameter. To extend or start a session in the background, set an "
             "event parameter {@'extend_session': @1}") == 1); // it is said once a minute
    play("+1799");
    extend(1.0);
    CHECK(play("+1799 on") == Texts{"e extend_session=1.0"}); // it goes on
    FIR::setSessionTimeoutInterval(0);
    play("+1");
    extend(true);
    CHECK(play("off") == Texts{"e extend_session=1", "auto:_e _et=1000"});
    for (int i = 0; i < 25; ++i) {
        play("+1");
        extend(std::int64_t{1});
    }
    CHECK(number("SELECT lifetime_count FROM events WHERE name = '_s'") == 4);
}

TEST_CASE_FIXTURE(SessionFixture, "with collection off nothing is logged; a reset begins with session 1")
{
    options.collectionEnabled = false;
    play("start on @Main +7200 @Other");
    CHECK_FALSE(std::filesystem::exists(folder / "config" / measurementConfigFile));
    FIR::setSessionTimeoutInterval(1e12);
    play("+3");
    FIR::setAnalyticsCollectionEnabled(true);
    CHECK(play("+2 off") == Texts{"auto:_f _sc=Other _si=2", "auto:_s _sid=1700007203 _sno=1 _sc=Other _si=2",
                                  "auto:_e _et=2000 _sc=Other _si=2"});
    CHECK(count(LedgerEntry::Disabled) == 0);
    play("+5 on +5");
    FIR::resetAnalyticsData();
    CHECK(session() == "1700007215");
    CHECK(shown(stored().at(1)) == "auto:_s _sid=1700007215 _sno=1 _sc=Other _si=2");
    CHECK(rows() == 2);
    end();

    settings = APMRemoteConfig(Values{{"measurement.api.session_id", false}});
    start();
    CHECK(session() == "Session ids are switched off");
}

TEST_CASE("what makes no sense in the file of sessions counts as missing")
{
    const TemporaryFolder folder;
    RecordingConsole console;
    UserDefaults defaults(folder / "measurement.plist", console);
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const double seconds : {-1.0, infinite, -infinite, std::numeric_limits<double>::quiet_NaN()}) {
        for (const std::string name :
             {"session_timeout_interval", "last_session_activity_time", "session_number", "session_id"})
            defaults.setDouble(seconds, "/mipeme/measurement/" + name);
        SessionRecord record(defaults);
        CHECK_FALSE(record.sessionTimeoutInterval());
        CHECK(record.lastActivityTime() == 0);
        record.beginSession(1'700'000'000.75);
        const SessionRecord kept(defaults);
        CHECK((kept.sessionNumber() == 1 && kept.sessionID() == 1'700'000'000));
        CHECK(kept.lastActivityTime() == 1'700'000'000.75);
    }
}

} // namespace skyflare
