// The whole app where what is around it is missing, slow or wrong.

#include "tests/app/AppFixture.h"
#include "tests/fakes/HttpServer.h"

#include <fstream>
#include <set>
#include <sstream>

using namespace skyflare;

namespace {

/// What is printed once or never; events and settings come as often as they happen.
void checkNothingIsSaidTwice(std::vector<std::string> lines, const std::string &errors)
{
    std::istringstream stream(errors);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    std::set<std::string> said;
    for (const std::string &line : lines) {
        CAPTURE(line);
        CHECK((said.insert(line).second || line.starts_with("Logged event: ")));
    }
}

} // namespace

TEST_CASE("without the desktop's services the app starts and runs, with a line for each at most")
{
    ChildProcess bus({"dbus-daemon", "--session", "--nofork", "--print-address"});
    const auto address = bus.readLine();
    REQUIRE(address);
    const std::vector<std::string> environments[] = {
        {}, // no session bus; a dead one; one with nobody on it
        {"DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere/bus"},
        {"DBUS_SESSION_BUS_ADDRESS=" + *address},
    };
    for (const auto &environment : environments) {
        const AppFixture fixture;
        AppSetup setup = fixture.setup();
        setup.environment = environment;
        DrivenApp app(setup);
        AppFixture::passOnboarding(app); // with a tap of the feedback service for each control
        AppFixture::start(app);
        app.seeChange("preview");
        app.close();
        CHECK(app.wait() == 0);
        CHECK(app.count("Permission granted: ") == 1);
        CHECK(app.count("Failed to register: ") == 1);
        checkNothingIsSaidTwice(app.lines(), app.process().errors());
    }
}

namespace {

/// An app whose deployer has put its remote configuration there.
AppSetup configuredBy(const HttpServer &server, const AppFixture &fixture)
{
    const auto deployment = fixture.folder / "deployment";
    std::filesystem::create_directories(deployment);
    std::ofstream(deployment / "Info.plist")
        << "<plist version=\"1.0\"><dict><key>SkyflareRemoteConfigURL</key>"
        << "<string>" << server.url() << "</string></dict></plist>";
    AppSetup setup = fixture.setup();
    setup.environment = {"DEPLOYMENT=" + deployment.string()};
    return setup;
}

} // namespace

TEST_CASE("whatever the remote configuration answers, the app works, and says in one line what is wrong")
{
    struct Row {
        std::string name;
        HttpServer::Answer answer;
        std::size_t errors;
    };
    const Row rows[] = {
        {"huge",
         {.bytes = "HTTP/1.1 200 OK\r\n\r\n{\"forceUpdateVersion\": 999", .repeated = std::string(4096, ' ')},
         1},
        {"no JSON", HttpServer::answer(200, "<html>Please log in to the hotel's network</html>"), 1},
        {"an error of the server's", HttpServer::answer(500, R"({"forceUpdateVersion": 999})"), 1},
        {"wrong types", HttpServer::answer(200, R"({"forceUpdateVersion": [999], "bottomMessage": 7})"), 0},
        {"nothing", {.bytes = {}, .then = HttpServer::Then::StayOpen}, 0},
        {"an update", HttpServer::answer(200, R"({"forceUpdateVersion": 999})"), 0},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        const HttpServer server([&row](const auto &) { return row.answer; });
        const AppFixture fixture;
        DrivenApp app(configuredBy(server, fixture));
        REQUIRE(server.waitForRequests(1));
        app.waitForLine("Error fetching config: ", row.errors);
        if (row.name == "an update") {
            app.see("Update Available");
            app.press("Escape");
        }
        AppFixture::passOnboarding(app);
        AppFixture::start(app);
        app.seeChange("preview");
        app.miss("Update Available");
        AppFixture::end(app);
        CHECK(server.requests().size() == 1);
        CHECK(app.count("Error fetching config: ") == row.errors);
    }
}
