// The whole app, as a person or a desktop starts it; without a display.

#include "platform/base/Files.h"
#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

using namespace skyflare;

namespace {

struct Program {
    TemporaryFolder folder;

    [[nodiscard]] std::vector<std::string> command() const
    {
        return {"/usr/bin/env",
                "QT_QPA_PLATFORM=offscreen",
                "QT_QUICK_BACKEND=software",
                SKYFLARE,
                "--camera",
                "simulated",
                "--data-dir",
                folder.path().string()};
    }
    /// Reads until that line comes; false if it never does.
    static bool waitFor(ChildProcess &process, const std::string &line)
    {
        while (const auto next = process.readLine()) {
            if (*next == line)
                return true;
        }
        return false;
    }
};

} // namespace

TEST_CASE_FIXTURE(Program, "a second start asks the first one, and ends; Ctrl-C ends the first")
{
    ChildProcess first(command());
    REQUIRE(waitFor(first, "Permission granted: false")); // it serves its loop
    for (int start = 0; start < 2; ++start) {
        ChildProcess later(command());
        CHECK(later.readAll().empty());
        CHECK(later.wait() == 0);
    }
    first.signal(SIGINT);
    CHECK(first.wait() == 0);
    CHECK(std::filesystem::exists(folder / "data" / "Storage.sqlite"));

    ChildProcess next(command()); // what a killed one has left behind is in nobody's way
    REQUIRE(waitFor(next, "Permission granted: false"));
    next.kill();
    ChildProcess afterKill(command());
    CHECK(waitFor(afterKill, "Permission granted: false"));
    afterKill.signal(SIGTERM);
    CHECK(afterKill.wait() == 0);
}

TEST_CASE_FIXTURE(Program, "a store that cannot be loaded ends the app with the reason, and stays as it was")
{
    std::filesystem::create_directories(folder / "data");
    const std::string garbage = "this is no database, but it is somebody's file";
    std::ofstream(folder / "data" / "Storage.sqlite") << garbage;
    ChildProcess process(command());
    process.readAll();
    CHECK(process.wait() == 1);
    CHECK(process.errors().find("Unresolved error ") != std::string::npos);
    CHECK(process.errors().find("Storage.sqlite") != std::string::npos);
    const auto bytes = readFile(folder / "data" / "Storage.sqlite");
    REQUIRE(bytes);
    CHECK(std::string(bytes->begin(), bytes->end()) == garbage);
}
