// What the app does while its window is open and nothing runs: nothing, if all is well.

#include "bench/AppRun.h"
#include "bench/Machine.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace skyflare::bench {

namespace {

constexpr double settlingSeconds = 5; ///< the start, and what is done once after it; not counted
constexpr double watchedSeconds = 20;
constexpr double mostWakeUps = 4; ///< a period of five seconds or less would make more

/// How often each thread of this process has gone to sleep so far, by its number and its name.
Numbers sleepsOfThreads()
{
    Numbers sleeps;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(task.path() / "status");
        std::string name;
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("Name:"))
                name = line.substr(line.find('\t') + 1);
            else if (line.starts_with("voluntary_ctxt_switches:"))
                sleeps["thread:" + task.path().filename().string() + ":" + name] =
                    std::stod(line.substr(line.find('\t')));
        }
    }
    return sleeps;
}

int watchApp(const std::filesystem::path &folder, const std::filesystem::path &file)
{
    double processor = 0;
    double time = 0;
    Numbers before;
    Numbers numbers;
    const auto begin = [&](AppRun &run) {
        run.doAfter(settlingSeconds, [&] {
            before = sleepsOfThreads();
            processor = processorSeconds();
            time = now();
            run.doAfter(watchedSeconds, [&] {
                numbers["share"] = (processorSeconds() - processor) / (now() - time);
                for (const auto &[name, sleeps] : sleepsOfThreads())
                    numbers[name] = sleeps - before[name];
                QCoreApplication::quit();
            });
        });
    };
    AppRun app(folder, {.ready = begin});
    const int status = app.run();
    writeNumbers(file, numbers);
    return status;
}

int measure(const std::string &self)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    const WorkFolder folder;
    const Numbers measured = measureInProcess(self, {"--app"}, folder.path());
    double wakeUps = -1; // the one that ends the measurement
    for (const auto &[name, value] : measured) {
        if (!name.starts_with("thread:"))
            continue;
        wakeUps += value;
        if (value > 0)
            std::fprintf(stderr, "%s: %g\n", name.c_str(), value);
    }
    Table table("The app at rest, nothing running, for 20 s");
    table.add({.what = "share of one core",
               .measured = percent(measured.at("share")),
               .reach = "<= 0.5 %",
               .isReached = measured.at("share") <= 0.005});
    table.add({.what = "times that any of its threads woke up",
               .measured = std::to_string(static_cast<int>(wakeUps)),
               .reach = "none at regular intervals",
               .isReached = wakeUps <= mostWakeUps});
    table.print();
    return 0;
}

} // namespace

} // namespace skyflare::bench

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--app") == 0)
        return skyflare::bench::watchApp(argv[2], argv[3]);
    return skyflare::bench::measure(argv[0]);
}
