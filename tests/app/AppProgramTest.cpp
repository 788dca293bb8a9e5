// The program itself, as a person or a desktop starts it; without a display.

#include "platform/base/Files.h"
#include "tests/app/AppFixture.h"
#include "tests/fakes/NetworkTrace.h"

#include <csignal>
#include <fstream>

using namespace skyflare;

namespace {

struct Program : AppFixture {
    [[nodiscard]] AppSetup setup() const { return {.folder = folder.path(), .program = SKYFLARE}; }
};

constexpr const char *servesItsLoop = "Permission granted: false";

} // namespace

TEST_CASE_FIXTURE(Program, "a second start asks the first one, and ends; Ctrl-C ends the first")
{
    DrivenApp first(setup());
    first.waitForLine(servesItsLoop);
    for (int start = 0; start < 2; ++start) {
        DrivenApp later(setup());
        CHECK(later.wait() == 0);
        CHECK(later.lines().empty());
    }
    first.process().signal(SIGINT);
    CHECK(first.wait() == 0);
    CHECK(std::filesystem::exists(folder / "data/Storage.sqlite"));

    DrivenApp next(setup()); // what a killed one has left behind is in nobody's way
    next.waitForLine(servesItsLoop);
    next.process().kill();
    DrivenApp afterKill(setup());
    afterKill.waitForLine(servesItsLoop);
    afterKill.process().signal(SIGTERM);
    CHECK(afterKill.wait() == 0);
}

TEST_CASE_FIXTURE(Program, "as it is shipped the app asks nothing of any network")
{
    const NetworkTrace network(folder / "trace");
    AppSetup traced = setup();
    traced.environment = network.command();
    DrivenApp app(traced);
    app.waitForLine(servesItsLoop);
    const auto measured = folder / "state/mipeme-app-measurement.sql";
    CHECK(waitUntil([&] { return std::filesystem::exists(measured); }));
    REQUIRE(NetworkTrace::signal(app.process(), SIGINT));
    CHECK(app.wait() == 0);
    CHECK(network.callsOutside() == std::vector<std::string>());
}

TEST_CASE_FIXTURE(Program, "a store that cannot be loaded ends the app with the reason, and stays as it was")
{
    std::filesystem::create_directories(folder / "data");
    const std::string garbage = "this is no database, but it is somebody's file";
    std::ofstream(folder / "data/Storage.sqlite") << garbage;
    DrivenApp app(setup());
    CHECK(app.wait() == 1);
    CHECK(app.complaints().find("Unresolved error ") != std::string::npos);
    CHECK(app.complaints().find("Storage.sqlite") != std::string::npos);
    const Bytes bytes = readFile(folder / "data/Storage.sqlite").value();
    CHECK(std::string(bytes.begin(), bytes.end()) == garbage);
}
