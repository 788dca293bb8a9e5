#include "bench/CollectorProcess.h"

#include "bench/Machine.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>
#include <utility>
#include <vector>

namespace skyflare::bench {

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

CollectorProcess::CollectorProcess(std::filesystem::path folder, const std::string &settings)
    : folder_(std::move(folder))
{
    std::vector<std::string> command{SKYFLARE_COLLECTOR, "--port", "0", "--state-dir", folder_.string()};
    if (!settings.empty()) {
        const auto file = folder_ / "settings.json";
        require(static_cast<bool>(std::ofstream(file) << settings << std::flush),
                "the settings were not written");
        command.insert(command.end(), {"--config", file.string()});
    }
    std::vector<char *> arguments;
    for (std::string &argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    int ends[2];
    require(pipe2(ends, O_CLOEXEC) == 0, "no pipe");
    pid_ = fork();
    require(pid_ >= 0, "no process can be started");
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        runOn(lastCore(), lastCore());
        dup2(ends[1], STDOUT_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
    const std::string line = readLine();
    const auto at = line.find(" port ");
    require(at != std::string::npos, "the collector does not start");
    port_ = std::atoi(line.c_str() + at + 6);
}

CollectorProcess::~CollectorProcess()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(output_);
}

std::string CollectorProcess::terminate()
{
    kill(pid_, SIGTERM);
    std::string line = readLine();
    int status = 1;
    const pid_t pid = std::exchange(pid_, -1);
    require(waitpid(pid, &status, 0) == pid && status == 0, "the collector did not end in order");
    return line;
}

void CollectorProcess::rotate() const
{
    std::filesystem::rename(file(), rotated()); // what was there goes
    kill(pid_, SIGHUP);
}

double CollectorProcess::bytesALine() const
{
    std::ifstream lines(std::filesystem::exists(rotated()) ? rotated() : file());
    double bytes = 0;
    double count = 0;
    for (std::string line; std::getline(lines, line) && count < 100'000; ++count)
        bytes += static_cast<double>(line.size() + 1);
    require(count > 0, "there are no events in the file");
    return bytes / count;
}

std::uint64_t CollectorProcess::memory() const
{
    std::ifstream status("/proc/" + std::to_string(pid_) + "/statm");
    std::uint64_t pages = 0;
    status >> pages >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

double CollectorProcess::seconds() const
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

std::string CollectorProcess::readLine() const
{
    std::string line;
    for (char letter = 0; read(output_, &letter, 1) == 1 && letter != '\n';)
        line += letter;
    return line;
}

} // namespace skyflare::bench
