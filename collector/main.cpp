#include "collector/Options.h"
#include "platform/base/StandardConsole.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/UserDirectories.h"

#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <span>

namespace skyflare {
namespace {

constexpr int done = 0;
constexpr int cannotStart = 1;
constexpr int wrongUsage = 2;

int complain(int status, const std::string &message)
{
    std::fprintf(stderr, "skyflare-collector: %s\n", message.c_str());
    return status;
}

sigset_t watchedSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, number);
    return signals;
}

/// Serves until it is told to end. A second signal ends the process at once.
void serve(CollectorServer &server, Collector &collector, ServedSettings &settings, Console &console)
{
    const sigset_t signals = watchedSignals();
    constexpr timespec oneSecond{1, 0};
    for (;;) {
        const int number = sigtimedwait(&signals, nullptr, &oneSecond);
        if (number == SIGINT || number == SIGTERM)
            break;
        if (number == SIGHUP) {
            collector.reopenFile();
            if (const auto loaded = settings.load(); !loaded)
                console.reportLine("skyflare-collector: " + loaded.error().message);
        }
        server.hangUpOnSlowClients();
    }
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    server.stop();
}

std::string summary(const CollectorTally &tally)
{
    const auto count = [](std::uint64_t number, const std::string &what) {
        return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
    };
    return "took " + count(tally.requests, "request") + ", " + count(tally.bundles, "bundle") + ", " +
           count(tally.events, "event") + "; " + count(tally.duplicates, "duplicate bundle") + " dropped, " +
           count(tally.refused, "request") + " refused, " + count(tally.putOff, "request") + " put off";
}

int run(const CollectorOptions &options)
{
    StandardConsole console;
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error, not an end
    const sigset_t signals = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr); // before there is any other thread

    ServedSettings settings(options.settings);
    if (const auto loaded = settings.load(); !loaded)
        return complain(cannotStart, loaded.error().message);
    CollectorPlaces places;
    places.stateFolder = options.stateFolder.value_or(UserDirectories::standard().state / "collector");
    places.output = options.output.value_or(places.stateFolder / "events.jsonl");
    auto journal = EventJournal::open(places, console);
    if (!journal)
        return complain(cannotStart, journal.error().message);

    const SystemClock clock;
    Collector collector({.clock = clock, .console = console, .journal = *std::move(journal)}, options.limits);
    const auto server = CollectorServer::start({.collector = collector, .settings = settings, .clock = clock},
                                               options.server);
    if (!server)
        return complain(cannotStart, server.error().message);
    console.printLine("skyflare-collector listens on " + options.server.address + " port " +
                      std::to_string((*server)->port()) + " and writes " + places.output.string());
    serve(**server, collector, settings, console);
    console.printLine("skyflare-collector " + summary(collector.tally()));
    return done;
}

int start(std::span<const char *const> arguments)
{
    const auto options = parseCollectorOptions(arguments);
    if (!options)
        return complain(wrongUsage, options.error().message);
    if (options->help)
        return std::fputs(collectorUsage().c_str(), stdout) < 0 ? cannotStart : done;
    if (options->version)
        return std::puts("skyflare-collector " SKYFLARE_VERSION) < 0 ? cannotStart : done;
    return run(*options);
}

} // namespace
} // namespace skyflare

int main(int argc, char **argv)
{
    return skyflare::start(
        std::span<const char *const>(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0)));
}
