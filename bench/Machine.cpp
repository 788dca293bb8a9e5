#include "bench/Machine.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <limits>

namespace skyflare::bench {

void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::exit(EXIT_FAILURE);
}

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

namespace {

double secondsOf(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

double processorSeconds()
{
    return secondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

double threadSeconds()
{
    return secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

namespace {

/// Bytes.
std::uint64_t memoryNamed(std::string_view name)
{
    std::ifstream status("/proc/self/status");
    for (std::string key; status >> key;) {
        std::uint64_t kibibytes = 0;
        if (key == name && status >> kibibytes)
            return kibibytes * 1024;
        status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return 0;
}

} // namespace

std::uint64_t peakMemory()
{
    return memoryNamed("VmHWM:");
}

void forgetPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

std::uint64_t currentMemory()
{
    return memoryNamed("VmRSS:");
}

void forgetFile(const std::filesystem::path &path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    fsync(file); // only what is on the disk can be forgotten
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    close(file);
}

double writeAndSync(const std::filesystem::path &folder, const Bytes &bytes)
{
    const auto path = folder / "yardstick";
    const double start = now();
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0)
        return -1;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
        if (written <= 0)
            break;
        done += static_cast<std::size_t>(written);
    }
    const bool isSynced = fsync(file) == 0;
    const double taken = now() - start;
    close(file);
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    return isSynced && done == bytes.size() ? taken : -1;
}

std::string megabytes(std::uint64_t bytes)
{
    char text[32];
    const double millions = static_cast<double>(bytes) / 1e6;
    std::snprintf(text, sizeof text, millions < 100 ? "%.3g MB" : "%.0f MB", millions);
    return text;
}

} // namespace skyflare::bench
