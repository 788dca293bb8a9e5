// The whole app where what is around it is missing, slow or wrong.

#include "tests/app/AppFixture.h"
#include "tests/fakes/HttpServer.h"
#include "tests/fakes/PrivateBus.h"

#include <set>
#include <thread>

using namespace skyflare;

namespace {

/// What is printed once or never; events and photos come as often as they happen.
void checkNothingIsSaidTwice(const std::vector<std::string> &lines)
{
    std::set<std::string> said;
    for (const std::string &line : lines) {
        CAPTURE(line);
        const bool comesWithEachPhoto = line.starts_with("Logged event: ") || line.starts_with("Fotoğraf ");
        CHECK((said.insert(line).second || comesWithEachPhoto));
    }
}

/// All that a desktop offers, on both buses, and all of it does the same, from when it is served on.
class UniformDesktop {
public:
    explicit UniformDesktop(const FakeBusService::Method &does)
    {
        for (const char *name :
             {"org.freedesktop.Notifications", "org.freedesktop.portal.Desktop", "org.sigxcpu.Feedback",
              "org.freedesktop.ScreenSaver", "org.gnome.SessionManager", "org.freedesktop.login1",
              "org.unifiedpush.Distributor.Example"}) {
            services_.push_back(std::make_unique<FakeBusService>(bus_, name, queue_));
            for (const char *method : {"GetCapabilities", "Notify", "Read", "Get", "Inhibit",
                                       "TriggerFeedback", "GetSession", "Register"})
                services_.back()->on(method, does);
        }
    }
    ~UniformDesktop()
    {
        queue_.async([this] { hasEnded_ = true; });
        if (server_.joinable())
            server_.join();
    }
    void serve()
    {
        server_ = std::thread([this] {
            while (!queue_.runUntil([this] { return hasEnded_; }))
                continue;
        });
    }
    [[nodiscard]] std::vector<std::string> environment() const
    {
        return {"DBUS_SESSION_BUS_ADDRESS=" + bus_.address(), "DBUS_SYSTEM_BUS_ADDRESS=" + bus_.address()};
    }

private:
    const PrivateBus bus_;
    PumpedQueue queue_;
    std::vector<std::unique_ptr<FakeBusService>> services_;
    bool hasEnded_ = false; ///< the server's
    std::thread server_;
};

} // namespace

TEST_CASE("without the desktop's services the app starts and runs, with a line for each at most")
{
    const PrivateBus bus;
    const auto no = [](auto) { return FakeBusService::Reply{.error = "org.example.Broken"}; };
    UniformDesktop broken(no);
    broken.serve();
    UniformDesktop silent([](auto) { return FakeBusService::Reply{}; });
    silent.serve();
    UniformDesktop late(no);
    struct Row {
        std::vector<std::string> environment;
        std::size_t permissions = 1; ///< how often that is answered
        std::size_t refusals = 0;    ///< of what keeps the screen awake
        UniformDesktop *late = nullptr;
    };
    const Row rows[] = {
        {{}}, // no session bus; a dead one; one with nobody on it, or with whom nothing works
        {{"DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere/bus"}},
        {{"DBUS_SESSION_BUS_ADDRESS=" + bus.address()}},
        {broken.environment(), 1, 1},
        {silent.environment(), 0}, // nobody has said no
        {late.environment(), 1, 1, &late},
    };
    for (const Row &row : rows) {
        CAPTURE(&row - rows);
        const AppFixture fixture;
        AppSetup setup = fixture.setup();
        setup.environment = row.environment;
        for (const char *const word : {"sh", "-c", "exec \"$@\" 2>&1", "sh"}) // its errors are lines, too
            setup.environment.emplace_back(word);
        DrivenApp app(setup);
        AppFixture::passOnboarding(app); // with a tap of the feedback service for each control
        AppFixture::start(app);
        app.seeChange("preview");
        if (row.late != nullptr) {
            app.see("lastPhotoButton");
            row.late->serve();
        }
        app.waitForLine("Permission granted: ", row.permissions);
        app.waitForLine("The screen may go dark during a run: ", row.refusals);
        app.close();
        CHECK(app.wait() == 0);
        for (const char *const once : {"Permission granted: ", "Failed to register: ", "The screen may "})
            CHECK(app.count(once) <= 1);
        checkNothingIsSaidTwice(app.lines());
    }
}

TEST_CASE("whatever the remote configuration answers, the app works, and says in one line what is wrong")
{
    struct Row {
        std::string name;
        HttpServer::Answer answer;
        std::size_t errors;
    };
    const Row rows[] = {
        {"no JSON", HttpServer::answer(200, "<html>Please log in to the hotel's network</html>"), 1},
        {"wrong types", HttpServer::answer(200, R"({"forceUpdateVersion": [999], "bottomMessage": 7})"), 0},
        {"nothing", {.bytes = {}, .then = HttpServer::Then::StayOpen}, 0},
        {"an update", HttpServer::answer(200, R"({"forceUpdateVersion": 999})"), 0},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        const HttpServer server([&row](const auto &) { return row.answer; });
        const AppFixture fixture;
        fixture.folder.write("deployment/Info.plist",
                             "<plist version=\"1.0\"><dict><key>SkyflareRemoteConfigURL</key><string>" +
                                 server.url() + "</string></dict></plist>");
        AppSetup setup = fixture.setup();
        setup.environment = {"DEPLOYMENT=" + (fixture.folder / "deployment").string()};
        DrivenApp app(setup);
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
        const bool isSilent = row.answer.then == HttpServer::Then::StayOpen; // the app says so after a while
        CHECK(app.count("Error fetching config: ") <= (isSilent ? 1 : row.errors));
    }
}
