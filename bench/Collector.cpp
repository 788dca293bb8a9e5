// How many events a second skyflare-collector takes on one core, synced, and whether its memory stays as it
// is.
//
//   collector_bench             about half a minute
//   collector_bench SECONDS     that long: 600 for the ten minutes
//
// The collector is a process of its own on the last core; what sends to it is kept off that core. Its file is
// rotated at a gigabyte, as deployers do.

#include "bench/CollectorLoad.h"
#include "bench/CollectorProcess.h"
#include "bench/Machine.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace skyflare::bench {

namespace {

constexpr double shortRunSeconds = 20;
constexpr std::uintmax_t rotatedAt = 1'000'000'000;

struct Run {
    double eventsASecond = 0;
    double share = 0; ///< of its core
    double bytesAnEvent = 0;
    std::uint64_t earlyMemory = 0; ///< the most in the run's first third
    std::uint64_t lateMemory = 0;  ///< the most after that
};

Run measure(double seconds)
{
    const WorkFolder folder;
    CollectorProcess collector(folder.path());
    Run run;
    std::uint64_t events = 0;
    {
        const CollectorLoad load(collector.port());
        const double start = now();
        double taken = 0;
        while (taken < seconds) {
            std::this_thread::sleep_for(std::chrono::milliseconds(250));
            taken = now() - start;
            auto &most = taken < seconds / 3 ? run.earlyMemory : run.lateMemory;
            most = std::max(most, collector.memory());
            if (std::filesystem::exists(collector.file()) &&
                std::filesystem::file_size(collector.file()) > rotatedAt)
                collector.rotate();
        }
        events = load.events();
        run.eventsASecond = static_cast<double>(events) / taken;
        run.share = collector.seconds() / taken;
    }
    std::fprintf(stderr, "%s\n", collector.terminate().c_str());
    run.bytesAnEvent = collector.bytesALine();
    return run;
}

/// The yardstick: as many bytes as the events' lines have, written and synced as often as the phones wait
/// together.
double bareEventsASecond(double bytesAnEvent)
{
    const WorkFolder folder;
    constexpr int rounds = 24;
    constexpr int events = CollectorLoad::phones * CollectorLoad::eventsABatch;
    const Bytes lines(static_cast<std::size_t>(bytesAnEvent * events), '1');
    const int file = open((folder.path() / "bare").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const double start = now();
    for (int round = 0; round < rounds; ++round)
        require(write(file, lines.data(), lines.size()) == static_cast<ssize_t>(lines.size()) &&
                    fdatasync(file) == 0,
                "the yardstick could not be written");
    const double taken = now() - start;
    close(file);
    return rounds * events / taken;
}

std::string eventsText(double aSecond)
{
    return std::to_string(static_cast<long>(aSecond / 1000) * 1000) + " events/s";
}

int run(double seconds)
{
    runOn(0, std::max(lastCore() - 1, 0));
    const Run run = measure(seconds);
    const double bare = bareEventsASecond(run.bytesAnEvent);
    Table table("The collector");
    char share[64];
    std::snprintf(share, sizeof share, ", %.0f %% of its core", 100 * run.share);
    table.add({"events a second from packed batches of 500 to synced lines, one core",
               eventsText(run.eventsASecond) + share,
               "writing and syncing the same bytes: " + eventsText(bare), ratio(run.eventsASecond / bare),
               ">= 100000 events/s", run.eventsASecond >= 100'000});
    const double growth = static_cast<double>(run.lateMemory) / static_cast<double>(run.earlyMemory);
    table.add({"most memory after the first third of " + duration(seconds), megabytes(run.lateMemory),
               "in the first third: " + megabytes(run.earlyMemory), ratio(growth), "<= 1.1 x",
               growth <= 1.1});
    table.print();
    return EXIT_SUCCESS;
}

} // namespace

} // namespace skyflare::bench

int main(int argc, char **argv)
{
    return skyflare::bench::run(argc > 1 ? std::atof(argv[1]) : skyflare::bench::shortRunSeconds);
}
