// The whole app where what is around it is missing, slow or wrong, and where it is closed at a bad moment.

#include "tests/app/AppFixture.h"
#include "tests/fakes/HttpServer.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

using namespace skyflare;

namespace {

/// What is printed once or never; events and settings come as often as they happen.
void checkNothingIsSaidTwice(const std::vector<std::string> &lines)
{
    std::set<std::string> said;
    for (const std::string &line : lines) {
        CAPTURE(line);
        CHECK((said.insert(line).second || line.starts_with("Logged event: ")));
    }
}

std::vector<std::string> linesOf(const std::string &text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

TEST_CASE("without the desktop's services the app starts and runs, with a line for each at most")
{
    ChildProcess bus({"dbus-daemon", "--session", "--nofork", "--print-address"});
    const auto address = bus.readLine();
    REQUIRE(address);
    struct Row {
        const char *name;
        std::vector<std::string> environment;
    };
    const Row rows[] = {
        {"no session bus", {}},
        {"a dead session bus", {"DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere/bus"}},
        {"nobody on the session bus", {"DBUS_SESSION_BUS_ADDRESS=" + *address}},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        const AppFixture fixture;
        AppSetup setup = fixture.setup();
        setup.environment = row.environment;
        DrivenApp app(setup);
        AppFixture::passOnboarding(app); // with a tap of the feedback service for each control
        app.click("Start");
        app.readUntil("mainButton", "Stop");
        app.seeChange("preview");
        app.close();
        CHECK(app.wait() == 0);
        CHECK(app.count("Permission granted: ") == 1);
        CHECK(app.count("Failed to register: ") == 1);
        checkNothingIsSaidTwice(app.lines());
        checkNothingIsSaidTwice(linesOf(app.process().errors()));
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
    setup.deployment = deployment;
    return setup;
}

} // namespace

TEST_CASE("a remote configuration that is wrong is told in one line, and does not keep the app from working")
{
    struct Row {
        const char *name;
        HttpServer::Answer answer;
        bool isError;
    };
    const Row rows[] = {
        {"huge",
         {.bytes = "HTTP/1.1 200 OK\r\n\r\n{\"forceUpdateVersion\": 999", .repeated = std::string(4096, ' ')},
         true},
        {"no JSON", HttpServer::answer(200, "<html>Please log in to the hotel's network</html>"), true},
        {"an error of the server's", HttpServer::answer(500, R"({"forceUpdateVersion": 999})"), true},
        {"wrong types", HttpServer::answer(200, R"({"forceUpdateVersion": [999], "bottomMessage": 7})"),
         false},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        const HttpServer server([&row](const auto &) { return row.answer; });
        const AppFixture fixture;
        DrivenApp app(configuredBy(server, fixture));
        REQUIRE(server.waitForHangUps(1));
        if (row.isError)
            app.waitForLine("Error fetching config: ");
        AppFixture::passOnboarding(app);
        app.click("Start");
        app.readUntil("mainButton", "Stop");
        app.miss("Update Available");
        app.close();
        CHECK(app.wait() == 0);
        CHECK(server.requests().size() == 1);
        CHECK(app.count("Error fetching config: ") == (row.isError ? 1 : 0));
        CHECK(app.complaints() == "");
    }
}

TEST_CASE("a version that must be updated says so, and one whose server never answers works")
{
    const AppFixture fixture;
    {
        const HttpServer server(
            [](const auto &) { return HttpServer::answer(200, R"({"forceUpdateVersion": 999})"); });
        DrivenApp app(configuredBy(server, fixture));
        app.see("Update Available");
        app.press("Escape");
        app.miss("Update Available");
        AppFixture::passOnboarding(app);
        app.close();
        CHECK(app.wait() == 0);
    }
    const HttpServer silent(
        [](const auto &) { return HttpServer::Answer{.bytes = {}, .then = HttpServer::Then::StayOpen}; });
    DrivenApp app(configuredBy(silent, fixture));
    REQUIRE(silent.waitForRequests(1));
    app.click("Start");
    app.readUntil("mainButton", "Stop");
    app.seeChange("preview");
    app.click("Stop");
    app.readUntil("mainButton", "Start");
    app.close();
    CHECK(app.wait() == 0);
    CHECK(app.complaints() == "");
}

TEST_CASE_FIXTURE(AppFixture,
                  "a window that is closed in the middle of a run leaves every photo in the store")
{
    DrivenApp app(setup());
    passOnboarding(app);
    chooseHighAndFivePhotos(app);
    app.click("Start");
    app.see("lastPhotoButton");
    app.close();
    CHECK(app.wait() == 0);
    CHECK(app.complaints() == "");
    CHECK(app.count("Logged event: stop_capture ") == 1);
    CHECK(app.count("Logged event: catch_photo ") >= 1);
    CHECK(storedPhotos() == static_cast<std::int64_t>(app.count("Logged event: catch_photo ")));
}
