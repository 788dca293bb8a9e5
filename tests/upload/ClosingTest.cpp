// Nothing holds up a program's end: a server that accepts a request and never answers.

#include "analytics/AnalyticsHost.h"
#include "platform/base/AsioQueues.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"
#include "platform/net/CurlTransport.h"
#include "tests/fakes/HttpServer.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/upload/DeployedWatch.h"

#include <chrono>
#include <csignal>
#include <future>

using namespace skyflare;

namespace {

HttpServer::Answer neverAnswer(const HttpServer::Request & /*request*/)
{
    return {.bytes = {}, .then = HttpServer::Then::StayOpen};
}

} // namespace

TEST_CASE("a program ends in time while its upload hangs")
{
    const HttpServer server(neverAnswer);
    const auto secondsToEnd = [](const std::string &host, const std::function<bool()> &isUnderWay) {
        const DeployedWatch deployed;
        deployed.deploy(host, "");
        const auto watch = deployed.watch();
        REQUIRE(watch->readLine());
        REQUIRE(isUnderWay());
        const auto start = std::chrono::steady_clock::now();
        watch->signal(SIGINT);
        watch->readAll();
        CHECK(watch->wait() == 0);
        CHECK(watch->errors().empty());
        CHECK(deployed.database().at("ledger").at("abandoned") == 0);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double alone = secondsToEnd("", [] { return true; });
    const double hanging = secondsToEnd(server.url(""), [&] { return server.waitForRequests(1); });
    CHECK(hanging < alone + 10); // a request's own time limit is a minute
}

TEST_CASE("an engine whose upload hangs stores what it has, and closes before it is given up")
{
    const HttpServer server(neverAnswer);
    const TemporaryFolder folder{memoryFolder()};
    const SystemClock clock;
    RecordingConsole console;
    SystemRandom random;
    CurlTransport transport;
    AsioQueues queues;
    const auto main = queues.makeSerialQueue("main");
    LaunchSwitches switches;
    switches.debugMode = true;
    AnalyticsHost host({.queues = queues,
                        .clock = clock,
                        .console = console,
                        .random = random,
                        .excludeFromBackup = {},
                        .transport = &transport},
                       {.config = folder / "config", .state = folder / "state", .deployment = {}}, switches,
                       {});
    APMAnalyticsOptions options;
    options.appID = "1:2:linux:3";
    options.collectionHost = server.url("");
    host.analytics().startWithConfiguration(options);
    FIRAnalytics::logEventWithName("first");
    REQUIRE(server.waitForRequests(1));
    for (int i = 0; i < 100; ++i)
        FIRAnalytics::logEventWithName("last");
    std::promise<void> closed;
    host.close(*main, [&closed] { closed.set_value(); });
    closed.get_future().wait();
    const EventTally tally = host.ledger().tally();
    CHECK(tally.count(LedgerEntry::Accepted) == 101);
    CHECK(tally.count(LedgerEntry::Abandoned) == 0); // giving up would have left them behind
    CHECK(tally.count(LedgerEntry::Uploaded) == 0);
    queues.close();
}
