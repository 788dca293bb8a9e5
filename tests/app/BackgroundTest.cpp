// The app without a window: in this process, and as the message bus starts it.

#include "app/BackgroundPush.h"
#include "platform/linux/DesktopNotifications.h"
#include "tests/push/PushFixture.h"

#include <doctest/doctest.h>

#include <csignal>

using namespace skyflare;

namespace {

constexpr const char *notificationService = "org.freedesktop.Notifications";
constexpr const char *busService = "org.freedesktop.DBus";

/// A desktop whose user has had the app once: it is registered, and has ended.
struct BackgroundFixture : PushFixture {
    std::unique_ptr<FakeBusService> desktop;
    std::string token;
    std::optional<WebPushSender> sender;
    std::vector<BackgroundPush::End> ends;
    std::string activationToken;
    std::optional<BackgroundPush> background;

    void registerOnce()
    {
        const auto running = startDistributor();
        startApp();
        REQUIRE(main.runUntil([&] { return running->count("Register") == 1; }));
        token = tokenIn(*running);
        bringEndpoint(token, "https://push.example/up");
        sender.emplace(tokens.at(0));
        notifications.reset();
        settle(session, busService);
    }
    /// A notification service that numbers from 7 on.
    void startDesktop(const char *capabilities)
    {
        desktop.reset();
        desktop = service(notificationService);
        desktop->on("GetCapabilities", capabilities);
        desktop->on("Notify", [next = 7U](auto) mutable { return Reply{g_variant_new("(u)", next++)}; });
    }
    void startBackground()
    {
        background.emplace(BackgroundPush::Services{session, main, random, console, folder / "state", app,
                                                    std::make_shared<DesktopNotifications>(session, app),
                                                    BackgroundNotifications::AfterEnd::Forgotten,
                                                    [this](auto end, const std::string &with) {
                                                        ends.push_back(end);
                                                        activationToken = with;
                                                    }});
        settle(session, busService); // it has its name
    }
    void bring(const char *text, const char *id) { bringMessage(token, sender->encrypt(text), id); }
    void waitForNotices(std::size_t count)
    {
        REQUIRE(main.runUntil([&] { return desktop->count("Notify") == count; }));
        settle(session, notificationService);
    }
    void signal(const char *name, GVariant *values) const
    {
        desktop->emit("/org/freedesktop/Notifications", notificationService, name, values);
    }
    void passTime()
    {
        main.passTime();
        settle(session, busService);
        settle(session, busService); // what the end of the while has begun
    }
};

using Ends = std::vector<BackgroundPush::End>;

/// The process that has the app's name. It does not outlive the test.
struct StartedProgram {
    std::uint32_t pid = 0;

    explicit StartedProgram(BackgroundFixture &with)
    {
        with.session.call({busService, "/", busService, "GetConnectionUnixProcessID",
                           takeVariant(g_variant_new("(s)", with.app.c_str())), "(u)"},
                          [this](const Result<BusAnswer> &answer) {
                              if (answer)
                                  g_variant_get(answer->values.get(), "(u)", &pid);
                          });
        REQUIRE(with.main.runUntil([this] { return pid != 0; }));
    }
    StartedProgram(const StartedProgram &) = delete;
    StartedProgram &operator=(const StartedProgram &) = delete;
    ~StartedProgram() { kill(static_cast<pid_t>(pid), SIGKILL); }
};

} // namespace

TEST_CASE_FIXTURE(BackgroundFixture, "it goes when all is quiet, and what it has shown is closed")
{
    registerOnce();
    startDesktop("(['actions', 'body'],)");
    startBackground();
    bring("first", "1");
    bring("second", "2");
    waitForNotices(2);
    CHECK(desktop->calls().back().starts_with(
        "Notify ('Skyflare', 0, 'org.example.App', 'Skyflare', 'second', ['default', 'Skyflare'], "));
    passTime();
    signal("NotificationClosed", g_variant_new("(uu)", 7U, 2U));
    settle(session, notificationService);
    passTime();
    CHECK(ends.empty());
    SUBCASE("the last one is closed")
    {
        signal("NotificationClosed", g_variant_new("(uu)", 8U, 1U));
        settle(session, notificationService);
        CHECK(ends.empty());
        main.passTime(); // and while it goes one more comes
        const Bytes third = sender->encrypt("third");
        auto *octets = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, third.data(), third.size(), 1);
        desktop->send(app, "/org/unifiedpush/Connector", "org.unifiedpush.Connector1", "Message",
                      g_variant_new("(s@ays)", token.c_str(), octets, "3"));
        waitForNotices(3);
        CHECK(ends.empty());
        signal("NotificationClosed", g_variant_new("(uu)", 9U, 1U));
        settle(session, notificationService);
        passTime();
        CHECK(ends == Ends{BackgroundPush::End::Done});
    }
    SUBCASE("the desktop wants the app")
    {
        bool isAnswered = false;
        system.call({app, "/org/example/App", "org.freedesktop.Application", "Activate",
                     takeVariant(g_variant_new_parsed("({'activation-token': <'t1'>},)")), "()"},
                    [&](const auto &answer) { isAnswered = answer.has_value(); });
        REQUIRE(main.runUntil([&] { return isAnswered; }));
        CHECK(ends == Ends{BackgroundPush::End::OpenApp});
        CHECK(activationToken == "t1");
    }
}

TEST_CASE_FIXTURE(BackgroundFixture, "it goes when nothing is shown, and where the name is not its own")
{
    registerOnce();
    std::shared_ptr<void> theApp;
    SUBCASE("the app runs")
    {
        theApp = service(app);
        startBackground();
    }
    SUBCASE("the app starts")
    {
        startBackground();
        settle(session, busService);
        theApp = BusName::claim(system, app, BusName::Claim::Firm, [](const auto &) {});
    }
    SUBCASE("a desktop without notifications, and a message that is not for us")
    {
        startBackground();
        bring("first", "1");
        bringMessage(token, {1, 2, 3}, "2");
        passTime();
    }
    SUBCASE("the bus goes")
    {
        startBackground();
        settle(session, busService);
        bus.kill();
    }
    REQUIRE(main.runUntil([&] { return !ends.empty(); }));
    CHECK(ends == Ends{BackgroundPush::End::Done});
}

TEST_CASE_FIXTURE(BackgroundFixture, "the bus starts the program for a message, and its window for a click")
{
    app = SKYFLARE_APP_ID;
    registerOnce();
    startDesktop("(['actions'],)");
    const auto portal = service("org.freedesktop.portal.Desktop");
    portal->on("Read",
               [](auto) { return Reply{.error = "org.example.No"}; }); // dark or light: a window's question
    bus.addService(app, "/usr/bin/env QT_QPA_PLATFORM=offscreen " SKYFLARE
                        " --background --no-analytics --camera=simulated --data-dir=" +
                            folder.path().string());
    bool isRead = false;
    session.call({busService, "/", busService, "ReloadConfig", {}, "()"},
                 [&](const auto &) { isRead = true; });
    REQUIRE(main.runUntil([&] { return isRead; }));

    CHECK(bringMessage(token, sender->encrypt(R"({"title":"Tonight","body":"at ten"})"), "m") ==
          "({'id': <'m'>},)");
    const StartedProgram started(*this);
    waitForNotices(1);
    CHECK(desktop->calls().back().starts_with(
        "Notify ('Skyflare', 0, 'org.skyflare.Skyflare', 'Tonight', 'at ten', ['default', 'Skyflare'], "));
    CHECK(portal->calls().empty());
    CHECK_FALSE(std::filesystem::exists(folder / "data"));
    CHECK_FALSE(std::filesystem::exists(folder / "state/window.lock"));

    const auto running = startDistributor();
    signal("ActionInvoked", g_variant_new("(us)", 7U, "default"));
    CHECK(main.runUntil([&] { return portal->count("Read") > 0; }));
    REQUIRE(main.runUntil([&] { return running->count("Register") == 1; }));
    CHECK(tokenIn(*running) == token);
    CHECK(std::filesystem::exists(folder / "state/window.lock"));
}
