// How many events a second skyflare-collector takes on one core, synced, and whether its memory stays as it
// is.
//
//   collector_bench             about half a minute
//   collector_bench SECONDS     that long: 600 for the ten minutes
//
// The collector is a process of its own on the last core; what sends to it is kept off that core. Its file is
// rotated at a gigabyte, as deployers do.

#include "bench/CollectorLoad.h"
#include "bench/Machine.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

namespace skyflare::bench {

namespace {

constexpr double shortRunSeconds = 20;
constexpr std::uintmax_t rotatedAt = 1'000'000'000;

void runOn(int firstCore, int lastCore)
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    for (int core = firstCore; core <= lastCore; ++core)
        CPU_SET(static_cast<std::size_t>(core), &cores);
    require(sched_setaffinity(0, sizeof cores, &cores) == 0, "no core can be chosen");
}

int lastCore()
{
    return static_cast<int>(std::thread::hardware_concurrency()) - 1;
}

/// The collector, on a core of its own.
class CollectorProcess {
public:
    explicit CollectorProcess(std::filesystem::path folder) : folder_(std::move(folder))
    {
        int ends[2];
        require(pipe2(ends, O_CLOEXEC) == 0, "no pipe");
        pid_ = fork();
        require(pid_ >= 0, "no process can be started");
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            runOn(lastCore(), lastCore());
            dup2(ends[1], STDOUT_FILENO);
            execl(SKYFLARE_COLLECTOR, SKYFLARE_COLLECTOR, "--port", "0", "--state-dir", folder_.c_str(),
                  nullptr);
            _exit(127);
        }
        close(ends[1]);
        output_ = ends[0];
        const std::string line = readLine();
        const auto at = line.find(" port ");
        require(at != std::string::npos, "the collector does not start");
        port_ = std::atoi(line.c_str() + at + 6);
    }
    CollectorProcess(const CollectorProcess &) = delete;
    CollectorProcess &operator=(const CollectorProcess &) = delete;
    ~CollectorProcess() { close(output_); }

    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] std::filesystem::path file() const { return folder_ / "events.jsonl"; }
    [[nodiscard]] std::filesystem::path rotated() const { return folder_ / "events.1"; }

    /// @return what it says that it took
    std::string terminate() const
    {
        kill(pid_, SIGTERM);
        std::string line = readLine();
        int status = 1;
        require(waitpid(pid_, &status, 0) == pid_ && status == 0, "the collector did not end in order");
        return line;
    }
    void rotate() const
    {
        std::filesystem::rename(file(), rotated()); // what was there goes
        kill(pid_, SIGHUP);
    }
    /// In the file before the last rotation, if there is one: the present one may be empty.
    [[nodiscard]] double bytesALine() const
    {
        std::ifstream lines(std::filesystem::exists(rotated()) ? rotated() : file());
        double bytes = 0;
        double count = 0;
        for (std::string line; std::getline(lines, line) && count < 100'000; ++count)
            bytes += static_cast<double>(line.size() + 1);
        require(count > 0, "there are no events in the file");
        return bytes / count;
    }
    [[nodiscard]] std::uint64_t memory() const
    {
        std::ifstream status("/proc/" + std::to_string(pid_) + "/statm");
        std::uint64_t pages = 0;
        status >> pages >> pages;
        return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    }
    /// Of the processor, so far.
    [[nodiscard]] double seconds() const
    {
        std::ifstream status("/proc/" + std::to_string(pid_) + "/stat");
        std::string skipped;
        for (int i = 0; i < 13; ++i)
            status >> skipped;
        double user = 0;
        double system = 0;
        status >> user >> system;
        return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
    }

private:
    std::filesystem::path folder_;
    pid_t pid_ = -1;
    int output_ = -1;
    int port_ = 0;

    [[nodiscard]] std::string readLine() const
    {
        std::string line;
        for (char letter = 0; read(output_, &letter, 1) == 1 && letter != '\n';)
            line += letter;
        return line;
    }
};

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
    const CollectorProcess collector(folder.path());
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
