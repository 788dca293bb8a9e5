#include "tests/analytics/EngineFixture.h"

namespace skyflare {

namespace {

using FIR = FIRAnalytics;
using Entry = LedgerEntry;

} // namespace

TEST_CASE_FIXTURE(EngineFixture, "what is called before the start is recorded after it, in order")
{
    clock.haste = 0;
    launch();
    FIR::setDefaultEventParameters({{{"d", 1.5}, {"a", true}, {"_d", true}}});
    FIR::logEventWithName("level_up", {{"a", std::int64_t{7}}, {"_bad", true}, {"ga_bad", true}});
    analytics().logEventWithOrigin("app", "old", {}, {.timestamp = 1'699'000'000.5});
    FIR::setUserPropertyString(text("blue"), "colour");
    FIR::applicationDidBecomeActive();
    FIR::logEventWithName("screen_view", {{"screen_class", text("Main")}});
    FIR::setDefaultEventParameters({});
    FIR::logEventWithName("level_up");
    time.advance(std::chrono::seconds(10));
    CHECK_FALSE(std::filesystem::exists(file));
    CHECK_FALSE(FIR::appInstanceID());

    options.appID = "1:2";
    start();
    CHECK(takeStored() == Texts{"auto:_f", "auto:_err _err=3 _ev=_d", "level_up a=7 _err=3 _ev=_bad d=1.5",
                                "old a=1 d=1.5", "auto:_s _sid=1700000000 _sno=1 a=1 d=1.5",
                                "auto:_e _et=10000 a=1 d=1.5", "_vs a=1 d=1.5 _sc=Main _si=1 _mst=1",
                                "level_up _sc=Main _si=1"});
    const auto events = stored();
    CHECK(events[2].timestamp == 1'700'000'010);
    CHECK(events[3].timestamp == 1'699'000'000.5);
    CHECK(properties() == Texts{"auto:_sid v=1700000000", "auto:_sno v=1", "colour v=blue"});
    const auto under = [&](const std::string &text) {
        return number("SELECT sum(1 << raw_events.rowid) FROM raw_events JOIN raw_events_metadata "
                      "USING (metadata_fingerprint) WHERE instr(metadata, CAST('" +
                      text + "' AS BLOB))");
    };
    CHECK(under("1:2") == 0b111111110);
    CHECK(under(*FIR::appInstanceID()) == 0b111111110);
    CHECK(under("blue") == 0b111100000); // from where it was set
    CHECK(count(Entry::PartsRefused) == 3);

    end();
    start(); // another process: no second "_f"
    analytics().logEventWithOrigin("app", "stale", {}, {.timestamp = 1'600'000'000.0});
    log("level_up");
    CHECK(takeStored() == Texts{"stale", "level_up"});
    time.advance(std::chrono::hours(25));
    log("level_up");
    CHECK(count(Entry::Stale) == 1);
}

TEST_CASE_FIXTURE(EngineFixture, "an event that is refused leaves an error event in its place")
{
    start();
    takeStored();
    log("first_open");
    log({});
    log(std::string(41, 'a'));
    log("e", {{"p", text(std::string(501, 'a'))}});
    APMAnalytics &engine = analytics();
    engine.logInternalEventWithOrigin("no origin", "_e", {});
    engine.logInternalEventWithOrigin("auto", "_e", {});
    engine.logEventWithOrigin("+gtm", "e", {});
    const PropertyList::Dictionary screen{
        {"_sc", text("")}, {"_si", std::int64_t{5}}, {"_sn", text("Main")}, {"z", 1.0}};
    engine.logEventWithOrigin("abc+gtm", "e", screen);
    engine.logInternalEventWithOrigin("abc", "e", screen);
    time.runUntilIdle();
    CHECK(takeStored() == Texts{
                              "auto:_err _err=13 _ev=first_open",
                              "auto:_err _err=2 _ev=(nil)",
                              "auto:_err _err=2 _ev=" + std::string(40, 'a') + "...",
                              "e _err=4 _ev=p _el=501",
                              "auto:_err _err=2 _ev=no origin",
                              "auto:_e",
                              "auto:_err _err=2 _ev=+gtm",
                              "abc+gtm:e z=1.0 _sn=Main _err=4 _ev=_sc _el=0 _si=5",
                              "abc:e _sc= _si=5 _sn=Main z=1.0",
                          });
    CHECK(count(Entry::Refused) == 5);
    CHECK(count(Entry::PartsRefused) == 2);
}

TEST_CASE_FIXTURE(EngineFixture,
                  "collection is off as chosen last, else as set up, and always where deactivated")
{
    options.collectionEnabled = false;
    switches.verboseLogging = true;
    start();
    log("e");
    FIR::setUserPropertyString(text("v"), "p");
    FIR::setUserPropertyString(text("v"), "allow_personalized_ads");
    FIR::setDefaultEventParameters({{{"_bad", true}}});
    CHECK(properties(IncludingInternal::No) ==
          Texts{"Cannot query for public user properties when Analytics is disabled"});
    for (const std::string line :
         {"info 21013: Analytics is disabled. User data not set.",
          "info 21014: Personalized Ads property changed while Analytics is disabled"})
        CHECK(console.count("<AppMeasurement> " + line) == 1);
    CHECK_FALSE(std::filesystem::exists(file));
    CHECK(count(Entry::Disabled) == 1);

    FIR::setAnalyticsCollectionEnabled(true);
    log("e");
    CHECK(takeStored() == Texts{"auto:_f", "e"});
    end();
    start(); // the choice outlives the process, and goes before the set-up
    log("e");
    FIR::setAnalyticsCollectionEnabled(false);
    log("dropped");
    analytics().logEventWithOrigin("app", "kept", {}, {.ignoreEnabled = true});
    time.runUntilIdle();
    CHECK(takeStored() == Texts{"e", "kept"});
    FIR::setAnalyticsCollectionEnabled(true);
    end();

    options.collectionDeactivated = true;
    std::filesystem::remove(file);
    start();
    analytics().logEventWithOrigin("app", "e", {}, {.ignoreEnabled = true});
    FIR::setAnalyticsCollectionEnabled(true);
    FIR::setUserPropertyString(text("v"), "p");
    FIR::resetAnalyticsData();
    CHECK(session() == "Analytics is deactivated");
    log("e");
    end();
    CHECK_FALSE(std::filesystem::exists(file));
    options = {};
    start(); // the reset was left for this one
    log("e");
    CHECK(shown(stored().at(0)) == "auto:_f");
}

TEST_CASE_FIXTURE(EngineFixture,
                  "the day's limits drop events and say so for the first alone; the next day is new")
{
    settings = APMRemoteConfig(PropertyList::Dictionary{{"measurement.upload.max_public_events_per_day", 2.0},
                                                        {"measurement.upload.max_error_events_per_day", 2.0},
                                                        {"measurement.upload.max_events_per_day", 5.0}});
    start();
    takeProblems();
    for (int i = 0; i < 5; ++i)
        log("e");
    CHECK(takeStored() == Texts{"auto:_f", "e", "e", "auto:_err _err=16 _ev=e", "auto:_err _err=16 _ev=e"});
    CHECK(takeProblems() == Texts{"Data loss. Too many public events logged. Name, limit: \"e\", 2",
                                  "Too many error events logged. Error code, limit: 16, 2"});
    for (int i = 0; i < 4; ++i)
        analytics().logInternalEventWithOrigin("auto", "_e", {});
    log("e");
    CHECK(takeStored() == Texts{"auto:_e", "auto:_e"});
    CHECK(takeProblems() == Texts{"Data loss. Too many events logged. Name, limit: \"_e\", 5"});
    CHECK(count(Entry::LimitedPublic) == 3);
    CHECK(count(Entry::LimitedError) == 1);
    CHECK(count(Entry::LimitedAll) == 3);
    end();
    start(); // the same day
    log("e");
    CHECK(takeStored().empty());
    time.advance(std::chrono::hours(24));
    log("e");
    CHECK(takeStored() == Texts{"e"});
}

TEST_CASE_FIXTURE(EngineFixture, "an event with one name too many is dropped, and takes nothing of the day")
{
    settings =
        APMRemoteConfig(PropertyList::Dictionary{{"measurement.upload.max_event_name_cardinality", 500.0},
                                                 {"measurement.upload.max_public_events_per_day", 502.0}});
    start();
    for (int i = 0; i < 499; ++i)
        FIR::logEventWithName("e" + std::to_string(i));
    FIR::applicationDidBecomeActive();
    log("screen_view", {{"screen_class", text("Main")}});
    log("last");
    takeStored();
    log("one_more");
    log("two_more");
    log("last");
    log("two_more");
    CHECK(takeStored() == Texts{"auto:_err _err=8 _ev=one_more", "auto:_err _err=8 _ev=two_more",
                                "last _sc=Main _si=1", "auto:_err _err=16 _ev=two_more"});
    CHECK(count(Entry::LimitedNames) == 2);
}

TEST_CASE_FIXTURE(EngineFixture, "a reset wipes and begins anew, at the next start if not at once")
{
    start();
    log("e");
    const auto first = FIR::appInstanceID();
    takeProblems();
    SUBCASE("no new id: nothing happens")
    {
        random.isBroken = true;
        FIR::resetAnalyticsData();
        log("e");
        CHECK(takeProblems() == Texts{"Cannot generate a new app instance ID"});
        CHECK(takeStored() == Texts{"auto:_f", "e", "e"});
    }
    SUBCASE("wiped at once")
    {
        FIR::setUserPropertyString(text("v"), "p");
        FIR::resetAnalyticsData();
        log("e");
        CHECK(takeStored() == Texts{"auto:_f", "e"});
        CHECK(FIR::appInstanceID() != first);
        CHECK(status()->userAttributes.empty());
        CHECK(count(Entry::Wiped) == 2);
    }
    SUBCASE("wiped at the next start")
    {
        {
            const auto other = *Database::open(file, OpenMode::Write, std::chrono::milliseconds(0));
            REQUIRE(other->execute("BEGIN IMMEDIATE"));
            FIR::resetAnalyticsData();
            time.runUntilIdle();
            CHECK(told("Failed to reset Analytics data") == 1);
        }
        CHECK(takeStored() == Texts{"auto:_f", "e"});
        const auto second = FIR::appInstanceID();
        CHECK(second != first);
        end();
        time.advance(std::chrono::minutes(2));
        start();
        CHECK(FIR::appInstanceID() == second);
        CHECK(shown(stored().at(0)) == "auto:_f");
        log("kept");
        end();
        start(); // once is enough
        CHECK(rows() == 2);
    }
}

TEST_CASE_FIXTURE(EngineFixture,
                  "the interceptor sees an event before the listeners, and they before it is stored")
{
    start();
    APMAnalytics &engine = analytics();
    FIR::applicationDidBecomeActive();
    time.runUntilIdle();
    Texts heard;
    const auto hear = [&](const std::string &who) {
        return [&heard, who](const APMEvent &event) { heard.push_back(who + " " + shown(event)); };
    };
    takeStored();
    takeProblems();
    engine.setLogEventInterceptor(hear("interceptor"));
    const auto first = engine.addLogEventListener(hear("first"));
    const auto second = engine.addLogEventListener([&](const APMEvent &event) {
        heard.push_back("second " + shown(event) + " " + std::to_string(stored().size()));
    });
    CHECK(first != second);
    CHECK(engine.addLogEventListener({}) == 0);
    log("screen_view", {{"_a", 1.0}, {"screen_class", text("M")}});
    log("_refused");
    CHECK(heard == Texts{"interceptor screen_view _err=3 _ev=_a _sc=M _si=1 _mst=1",
                         "first screen_view _err=3 _ev=_a _sc=M _si=1 _mst=1",
                         "second screen_view _err=3 _ev=_a _sc=M _si=1 _mst=1 2"});
    heard.clear();
    engine.removeLogEventListener(second);
    engine.removeLogEventListener(second);
    engine.logEventWithOrigin("app", "past", {}, {.ignoreInterceptor = true});
    engine.setLogEventInterceptor({});
    engine.notifyEventListeners({"fa", "told", 0, 0, {}});
    log("e");
    CHECK(heard == Texts{"first past _sc=M _si=1", "first fa:told", "first e _sc=M _si=1"});
    CHECK(takeStored() == Texts{"_vs _err=3 _ev=_a _sc=M _si=1 _mst=1", "auto:_err _err=2 _ev=_refused",
                                "past _sc=M _si=1", "e _sc=M _si=1"});
    CHECK(told("Attempted addition of nil log event listener.") == 1);
    CHECK(told("Attempted removal of log event listener with invalid token.") == 1);
}

TEST_CASE_FIXTURE(EngineFixture,
                  "user properties keep to their rules and their number; the user's word about ads holds")
{
    settings =
        APMRemoteConfig(PropertyList::Dictionary{{"measurement.upload.max_public_user_properties", 25.0}});
    start();
    takeStored();
    takeProblems();
    APMAnalytics &engine = analytics();
    FIR::setUserPropertyString(std::int64_t{5}, "number");
    FIR::setUserPropertyString(text(std::string(37, 'a')), "long");
    FIR::setUserPropertyString(text("v"), "user_id");
    FIR::setUserPropertyString(text("v"), {});
    FIR::setUserID(1.5);
    engine.setInternalUserProperty(text("v"), "_x", "no origin");
    engine.setInternalUserProperty(Bytes{1}, "_x", "auto");
    time.runUntilIdle();
    CHECK(takeStored() == Texts{"auto:_err _err=7 _ev=number", "auto:_err _err=7 _ev=long _el=37",
                                "auto:_err _err=15 _ev=user_id", "auto:_err _err=6 _ev=(nil)",
                                "auto:_err _err=7 _ev=_id", "auto:_err _err=6 _ev=_x",
                                "auto:_err _err=7 _ev=_x"});
    CHECK(properties().empty());
    for (const std::string expected :
         {"User property must be NSString. Value: NSNumber", "User ID must be NSString. User ID: NSNumber",
          "Unable to set user property. Origin is invalid. Origin, name: \"no origin\", \"_x\""})
        CHECK(told(expected) == 1);

    FIR::setUserPropertyString(text("FALSE"), "allow_personalized_ads");
    FIR::setUserID(text("me"));
    engine.setInternalUserProperty(std::int64_t{1'700'000'000}, "ga_session_id", "auto");
    CHECK(properties() ==
          Texts{"_id v=me", "auto:_npa v=1", "auto:_sid v=1700000000", "allow_personalized_ads v=FALSE"});
    CHECK(session() == "1700000000");
    FIR::setUserPropertyString({}, "allow_personalized_ads");
    FIR::setUserID({});
    CHECK(properties() == Texts{"auto:_sid v=1700000000"});

    for (int i = 0; i < 26; ++i)
        FIR::setUserPropertyString(text("v"), "p" + std::to_string(i));
    FIR::setUserPropertyString(text("new"), "p0");
    FIR::setUserPropertyString(text("true"), "allow_personalized_ads");
    CHECK(properties(IncludingInternal::No).size() == 25);
    CHECK(properties().at(0) == "auto:_npa v=0");
    CHECK(properties().at(2) == "p0 v=new");
    CHECK(takeStored() == Texts{"auto:_err _err=9 _ev=p25", "auto:_err _err=9 _ev=allow_personalized_ads"});
    CHECK(count(Entry::PartsRefused) == 9);
}

TEST_CASE_FIXTURE(EngineFixture, "what is not done yet checks its arguments as well")
{
    start();
    takeProblems();
    FIR::setSessionTimeoutInterval(-1);
    FIR::sessionIDWithCompletion({});
    CHECK(session() == "There is no session yet");
    FIR::setConsent({{"ad_storage", "granted"}, {"ad_user_data", "Denied"}});
    FIR::setConsent({});
    CHECK(takeProblems() == Texts{"Received negative timeout session duration. Setting to 0.0 instead.",
                                  "Analytics sessionID completion cannot be nil",
                                  "Valid consent values are 'granted' and 'denied'. Ignoring invalid consent "
                                  "setting: \"ad_user_data\", \"Denied\"",
                                  "Discarding empty consent settings"});
    int completions = 0;
    FIR::handleEventsForBackgroundURLSession("id", [&] { ++completions; });
    FIR::setShared(nullptr);
    FIR::handleEventsForBackgroundURLSession("id", [&] { ++completions; });
    FIR::logEventWithName("nobody_there");
    CHECK(completions == 2);
}

} // namespace skyflare
