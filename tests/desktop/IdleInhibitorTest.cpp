#include "platform/linux/DesktopIdleInhibitor.h"
#include "tests/desktop/BusFixture.h"

using namespace skyflare;

namespace {

struct Way {
    const char *name;
    const char *answer;
    BusFixture::Texts calls;
};
const std::vector<Way> ways{
    {"org.freedesktop.portal.Desktop",
     "(objectpath '/org/freedesktop/portal/desktop/request/1_9/t',)",
     {"Inhibit ('', 8, {'handle_token': <'skyflare_idle_1'>, 'reason': <'A run'>})", "Close ()"}},
    {"org.freedesktop.ScreenSaver", "(uint32 5,)", {"Inhibit ('Skyflare', 'A run')", "UnInhibit (5,)"}},
    {"org.gnome.SessionManager",
     "(uint32 6,)",
     {"Inhibit ('org.example.App', 0, 'A run', 8)", "Uninhibit (6,)"}}};
const Way &portalWay = ways[0];
const Way &screenSaver = ways[1];
const Way &sessionManager = ways[2];

struct IdleFixture : BusFixture {
    std::shared_ptr<DesktopIdleInhibitor> inhibitor =
        std::make_shared<DesktopIdleInhibitor>(session, main, console, "org.example.App");

    /// One that says yes.
    std::unique_ptr<FakeBusService> start(const Way &way)
    {
        auto started = service(way.name);
        started->on("Inhibit", way.answer);
        started->on(way.calls[1].substr(0, way.calls[1].find(' ')), "()");
        return started;
    }
    /// What one answers, and what that leads to, is over.
    void settleAll()
    {
        for (int round = 0; round < 4; ++round) {
            for (const Way &way : ways)
                settle(session, way.name);
        }
    }
};

} // namespace

TEST_CASE_FIXTURE(IdleFixture, "the screen is kept awake in the way that there is, while it is wanted")
{
    for (const Way &way : ways) {
        CAPTURE(way.name);
        const auto running = start(way);
        inhibitor = std::make_shared<DesktopIdleInhibitor>(session, main, console, "org.example.App");
        auto first = inhibitor->inhibit("A run");
        settleAll();
        auto second = inhibitor->inhibit("Another");
        first.reset();
        settleAll();
        CHECK(running->calls().size() == 1);
        second.reset();
        settleAll();
        CHECK(running->calls() == way.calls);
        inhibitor->inhibit("A run").reset(); // over before the answer of the first that is asked
        settleAll();
        REQUIRE(running->calls().size() == (&way == &portalWay ? 4 : 2));
        CHECK(running->calls().back() == way.calls[1]);
    }
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(IdleFixture, "when a service goes, comes or changes its mind all are asked again")
{
    const auto awake = inhibitor->inhibit("A run");
    auto saver = start(screenSaver);
    for (int falls = 0; falls < 2; ++falls) {
        settleAll();
        CHECK(saver->count("Inhibit") == 1);
        saver.reset();
        settleAll();
        saver = start(screenSaver);
    }
    settleAll();
    auto portal = start(portalWay);
    settleAll();
    CHECK(portal->calls().empty()); // the screen saver does it
    saver.reset();
    settleAll();
    REQUIRE(portal->calls().size() == 1);
    saver = start(screenSaver);
    const std::string &call = portal->calls()[0];
    const std::size_t token = call.find("skyflare_idle_");
    for (const std::string &of : {std::string("t"), call.substr(token, call.find('\'', token) - token)}) {
        settleAll();
        CHECK(saver->calls().empty());
        portal->emit("/request/" + of, "org.freedesktop.portal.Request", "Response",
                     g_variant_new("(ua{sv})", 2U, nullptr)); // another question's; ours
    }
    settleAll();
    CHECK(saver->count("Inhibit") == 1);
}

TEST_CASE_FIXTURE(IdleFixture, "one that does not answer is passed over, and its late yes is given back")
{
    const auto saver = start(screenSaver);
    saver->on("Inhibit", [](auto) { return Reply{}; });
    const auto manager = start(sessionManager);
    const auto awake = inhibitor->inhibit("A run");
    REQUIRE(main.runUntil([&] { return saver->count("Inhibit") == 1; }));
    main.passTime();
    settleAll();
    CHECK(manager->count("Inhibit") == 1);
    saver->answerLate({g_variant_new("(u)", 5U)});
    settleAll();
    CHECK(saver->calls().back() == "UnInhibit (5,)");
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(IdleFixture, "a refusal is said once; a service that falls again and again is left alone")
{
    auto saver = service(screenSaver.name);
    saver->on("Inhibit", [](auto) { return Reply{.error = "org.example.No"}; });
    for (int run = 0; run < 2; ++run) {
        const auto awake = inhibitor->inhibit("A run");
        settleAll();
    }
    REQUIRE(console.reports().size() == 1);
    CHECK(console.reports()[0].starts_with("The screen may go dark during a run: "));
    const auto awake = inhibitor->inhibit("A run");
    std::size_t questions = 0;
    for (int falls = 0; falls < 10; ++falls) {
        settleAll();
        saver.reset();
        settleAll();
        saver = start(screenSaver);
        settleAll();
        questions += saver->count("Inhibit");
    }
    CHECK(questions == 8);
    CHECK(console.reports().size() == 1);
}
