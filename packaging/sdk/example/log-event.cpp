// Logs an event, and sends it to a collector on this machine. In debug mode that takes a few seconds:
//     skyflare-collector --state-dir collected &
//     ./log-event http://127.0.0.1:8765 log-event-data && cat collected/events.jsonl
#include "analytics/AnalyticsHost.h"
#include "platform/base/AsioQueues.h"
#include "platform/base/MainLoop.h"
#include "platform/base/StandardConsole.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"
#include "platform/net/CurlTransport.h"

using namespace skyflare;

int main(int argc, char **argv)
{
    const std::filesystem::path folder = argc > 2 ? argv[2] : "log-event-data";
    Deployment deployment; // a program of its own reads these from files: Deployment::read()
    deployment.info.emplace("MIPEME_ANALYTICS_COLLECTION_HOST", std::string(argc > 1 ? argv[1] : ""));
    deployment.mipemeServiceInfo.emplace("MIPEME_APP_ID", std::string("1:1234:linux:5678"));

    const SystemClock clock;
    StandardConsole console;
    SystemRandom random;
    MainLoop loop;
    CurlTransport transport;
    AsioQueues queues;
    AnalyticsHost engine(
        {.queues = queues, .clock = clock, .console = console, .random = random, .transport = &transport},
        {.config = folder / "config", .state = folder / "state", .deployment = deployment},
        {.debugMode = true}, {.appVersion = "1.0", .platform = "linux"});
    engine.start();
    FIRAnalytics::logEventWithName("lesson_finished", {{"score", std::int64_t(7)}});

    loop.asyncAfter(std::chrono::seconds(10),
                    [&] { engine.close(loop, [&] { queues.closeThen([&loop] { loop.quit(); }); }); });
    loop.run();
}
