#include "analytics/proto/BatchMessage.h"
#include "analytics/store/Gzip.h"
#include "tests/analytics/EngineFixture.h"
#include "tests/fakes/FakeHttpTransport.h"

#include <limits>

namespace skyflare {

using namespace std::chrono_literals;

namespace {

constexpr double never = std::numeric_limits<double>::infinity();

struct FakeNetwork final : NetworkMonitor {
    bool isUp = true;
    std::function<void()> changed;

    [[nodiscard]] bool isConnected() const override { return isUp; }
    void observe(std::function<void()> given) override { changed = std::move(given); }
};

const Error noWay = httpError(HttpFailure::Unreachable, "nobody there");

HttpResponse said(int status, std::string_view body = {})
{
    return {.status = status, .body = Bytes(body.begin(), body.end())};
}

/// An engine with a server that the test speaks for.
struct UploadFixture : EngineFixture {
    FakeHttpTransport server;
    FakeNetwork way;

    UploadFixture()
    {
        clock.haste = 0;
        transport = &server;
        network = &way;
        options.appID = "1:2:linux:3";
        options.collectionHost = "collect.example.org";
    }
    ~UploadFixture() { end(); }

    void startAndLog(const std::string &name)
    {
        if (host)
            end();
        start();
        log(name);
    }
    /// @return the seconds until there is one more request than there have been
    double untilRequest()
    {
        const std::size_t before = server.requests.size();
        for (int seconds = 0; seconds <= 100'000; ++seconds) {
            if (server.requests.size() > before)
                return seconds;
            time.advance(1s);
        }
        return never;
    }
    void answer(const Result<HttpResponse> &answer)
    {
        server.answer(answer);
        time.runUntilIdle();
    }
    [[nodiscard]] APMMeasurementBatch batch(std::size_t request) const
    {
        return *BatchMessage::decode(*gunzip(server.requests.at(request).body, 1U << 24U));
    }
    /// Without those of the engine's own.
    [[nodiscard]] Texts names(std::size_t request) const
    {
        Texts found;
        for (const APMMeasurementBundle &bundle : batch(request).bundles)
            for (const APMEvent &event : bundle.events)
                if (!event.name.starts_with('_'))
                    found.push_back(event.name);
        return found;
    }
    void change(const std::string &sql) const
    {
        REQUIRE((*Database::open(file, OpenMode::Write, 1s))->execute(sql));
    }
    [[nodiscard]] std::int64_t mostProperties()
    {
        std::int64_t most = 0;
        analytics().maxUserPropertiesForOrigin("app", time.makeSerialQueue("asked"),
                                               [&most](std::int64_t given) { most = given; });
        time.runUntilIdle();
        return most;
    }
};

} // namespace

TEST_CASE_FIXTURE(UploadFixture, "the first event goes after 15 s, the next ones an hour after the success")
{
    startAndLog("a");
    CHECK(untilRequest() == 15);
    const HttpRequest request = server.requests.at(0);
    CHECK(request.method == HttpRequest::Method::Post);
    CHECK(request.url == "https://collect.example.org/a");
    CHECK(request.headers.at(0).value == "application/x-protobuf");
    CHECK(request.headers.at(1).value == "gzip");
    CHECK(request.timeLimit == 60s);
    CHECK(batch(0).facts == APMBatchFacts{time.secondsSince1970(), SKYFLARE_VERSION, false});
    log("b");
    CHECK(untilRequest() == never); // one is in flight, whatever happens
    answer(said(200));
    CHECK(untilRequest() == 3'600);
    answer(said(204));
    CHECK(waiting() == 0);
    CHECK(untilRequest() == never);
    CHECK(time.pendingTimers() == 0); // nothing waits, and nobody waits for it
    CHECK(takeProblems().empty());
}

TEST_CASE_FIXTURE(UploadFixture, "after a failure it is tried six times, ever later; then with new events")
{
    startAndLog("a");
    CHECK(untilRequest() == 15);
    for (const double pause : {1'800, 3'600, 7'200, 14'400, 28'800, 57'600}) {
        answer(pause > 3'600 ? Result(said(500)) : noWay);
        if (pause == 7'200) { // a later process remembers
            end();
            start();
        }
        CHECK(untilRequest() == pause);
    }
    answer(said(302));
    CHECK(number("SELECT retry_count FROM queue") == 7);
    CHECK(untilRequest() == never);
    log("b");
    CHECK(untilRequest() == 15);
    CHECK(names(7) == Texts{"a", "b"});
    for (const int status : {503, 529}) { // that it takes nothing now
        answer(said(status));
        startAndLog("c");
        CHECK(untilRequest() == 43'200);
    }
}

TEST_CASE_FIXTURE(UploadFixture, "bundles that cannot be deleted are not sent again for an hour of uptime")
{
    switches.debugMode = true; // in which it would go on at once
    startAndLog("a");
    untilRequest();
    change("CREATE TRIGGER held BEFORE DELETE ON queue BEGIN SELECT RAISE(FAIL, 'held'); END");
    answer(said(200));
    change("DROP TRIGGER held");
    clock.setAheadBy = 500'000;
    log("b");
    CHECK(untilRequest() == 3'600);
}

TEST_CASE_FIXTURE(UploadFixture, "a reset and a user who wants no measuring end what is under way")
{
    startAndLog("a");
    untilRequest();
    SUBCASE("a reset: what comes then is another installation's")
    {
        analytics().resetAnalyticsData();
        answer(said(500)); // which is on its way while the reset is done
        log("b");
        CHECK(untilRequest() == 15);
        CHECK(names(1) == Texts{"b"});
        answer(said(200));
        analytics().resetAnalyticsData();
        CHECK(untilRequest() == 15);
    }
    SUBCASE("collection is switched off")
    {
        analytics().setAnalyticsCollectionEnabled(false);
        time.runUntilIdle();
        answer(said(200));
        CHECK(untilRequest() == never);
        CHECK((time.pendingTimers() == 0 && waiting() == 2));
        analytics().setAnalyticsCollectionEnabled(true);
        CHECK(untilRequest() == 1); // what had its time
        CHECK(names(1) == Texts{"a"});
    }
    CHECK(EngineInFolder::end()); // so does the program's
}

TEST_CASE("where there is nowhere to send to, nothing is asked for and no timer set")
{
    struct Row {
        const char *what;
        void (*take)(UploadFixture &from);
        std::size_t problems = 0;
    };
    const Row rows[] = {
        {"no host", [](UploadFixture &from) { from.options.collectionHost.clear(); }},
        {"one that is refused", [](UploadFixture &from) { from.options.collectionHost = "http://a.org"; }, 1},
        {"no app id", [](UploadFixture &from) { from.options.appID.clear(); }},
        {"no transport", [](UploadFixture &from) { from.transport = nullptr; }},
        {"collection is off", [](UploadFixture &from) { from.options.collectionEnabled = false; }},
    };
    for (const Row &row : rows) {
        CAPTURE(row.what);
        UploadFixture engine;
        engine.options.configurationHost = "settings.example.org";
        row.take(engine);
        engine.startAndLog("a");
        CHECK(engine.time.pendingTimers() == 0);
        CHECK(engine.untilRequest() == never);
        CHECK(engine.takeProblems().size() == row.problems);
    }
}

TEST_CASE_FIXTURE(UploadFixture, "without a network nothing is asked for, until there is one")
{
    options.configurationHost = "settings.example.org";
    way.isUp = false;
    startAndLog("a");
    CHECK((time.pendingTimers() == 0 && server.requests.empty()));
    way.isUp = true;
    way.changed();
    CHECK(untilRequest() == 15);
    CHECK(server.requests.at(0).method == HttpRequest::Method::Get);
    end();
    CHECK_FALSE(way.changed);
}

TEST_CASE_FIXTURE(UploadFixture, "in debug mode a backlog drains at once, in batches within their limits")
{
    settings = APMRemoteConfig({{"measurement.upload.max_events_per_bundle", std::int64_t{10}},
                                {"measurement.upload.max_bundles", std::int64_t{3}},
                                {"measurement.upload.max_bundles_created_per_iteration", 2.9}});
    switches.debugMode = true;
    server.answers.assign(20, said(200));
    start();
    for (int i = 0; i < 95; ++i)
        FIRAnalytics::logEventWithName("a", {});
    time.advance(20s);
    for (std::size_t i = 0; i < server.requests.size(); ++i)
        CHECK((batch(i).facts.isDebug && batch(i).bundles.size() <= 2)); // no more are made in one go
    CHECK(count(LedgerEntry::Uploaded) == 96);                           // with that of the first open
    CHECK(waiting() == 0);
}

TEST_CASE_FIXTURE(UploadFixture, "what comes to no request is not tried again before half an hour")
{
    switches.verboseLogging = true;
    startAndLog("a");
    untilRequest();
    end();
    SUBCASE("all that waits is another app's")
    {
        options.appID = "another";
        start();
        time.advance(17'000s);
        CHECK(told("26008") == 10);
        log("b"); // which is not held up by them
        CHECK(untilRequest() == 15);
        CHECK(names(1) == Texts{"b"});
    }
    SUBCASE("the bundles cannot be made")
    {
        change("DELETE FROM queue; CREATE TRIGGER held BEFORE INSERT ON queue "
               "BEGIN SELECT RAISE(FAIL, 'held'); END");
        startAndLog("b");
        time.advance(17s);
        log("c");
        change("DROP TRIGGER held");
        CHECK(untilRequest() == 1'798);
    }
}

TEST_CASE_FIXTURE(UploadFixture, "the server's settings hold at once, and after a restart")
{
    options.configurationHost = "settings.example.org";
    start();
    CHECK(server.requests.at(0).url ==
          "https://settings.example.org/config/app/1:2:linux:3?platform=&gmp_version=" SKYFLARE_VERSION
          "&runtime_version=");
    log("a");
    answer(said(200, R"({"measurement.upload.interval": 60, "measurement.upload.initial_upload_delay_time": 2,
                         "measurement.upload.max_public_user_properties": 30, "uploadSubdomain": "eu"})"));
    CHECK(mostProperties() == 30);
    CHECK(untilRequest() == 2);
    CHECK(server.requests.at(1).url == "https://eu.collect.example.org/a");
    answer(said(200));
    startAndLog("b");
    CHECK(mostProperties() == 30);
    CHECK(untilRequest() == 60);
    answer(said(200));
    time.advance(1h);
    log("c");
    CHECK(untilRequest() == 2);
    CHECK(server.requests.at(3).method == HttpRequest::Method::Get); // they are old: they come first
    answer(said(404));
    CHECK(mostProperties() == 100); // there are none any more
    CHECK(server.requests.at(4).url == "https://collect.example.org/a");
}

TEST_CASE_FIXTURE(UploadFixture,
                  "an answer that is no settings changes nothing, and is not asked for again soon")
{
    options.configurationHost = "settings.example.org";
    server.answers = {said(200, R"({"measurement.upload.interval": 5, "measurement.config.cache_time": 60,
                                    "measurement.upload.max_public_user_properties": 40})")};
    startAndLog("a");
    for (const Result<HttpResponse> &bad : {Result(said(500)), Result(said(200, "[40]")),
                                            Result(said(302, "{}")), Result<HttpResponse>(noWay)}) {
        time.advance(2h);
        server.answers = {bad};
        server.requests.clear();
        for (int i = 0; i < 3; ++i) {
            analytics().applicationDidBecomeActive();
            time.runUntilIdle();
        }
        CHECK(std::ranges::count(server.requests, HttpRequest::Method::Get, &HttpRequest::method) == 1);
        CHECK(mostProperties() == 40);
    }
    server.requests.clear();
    analytics().resetAnalyticsData(); // the settings are fetched anew, and hold until then
    CHECK(mostProperties() == 40);
    CHECK(server.requests.size() == 1);
}

} // namespace skyflare
