#include "platform/linux/PortalAppearance.h"
#include "platform/linux/PortalCamera.h"
#include "platform/linux/PortalRegistration.h"
#include "platform/linux/PortalURLOpener.h"
#include "tests/desktop/BusFixture.h"

#include <fcntl.h>

#include <thread>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

using Schemes = std::vector<ColorScheme>;
using Status = CameraAuthorizationStatus;
constexpr const char *desktop = "org.freedesktop.portal.Desktop";
constexpr const char *path = "/org/freedesktop/portal/desktop";
constexpr const char *requests = "/org/freedesktop/portal/desktop/request/1_9/";

struct PortalFixture : BusFixture {
    Texts tokens;                    ///< of the questions that the portal has put to its user
    std::optional<guint32> response; ///< of a user who is quicker than the call
    std::unique_ptr<FakeBusService> portal = startPortal();
    std::shared_ptr<PortalCamera> camera = std::make_shared<PortalCamera>(session, console, 60s);
    std::string answers; ///< to taps, with their numbers: "1-2+" is a no, then a yes
    int taps = 0;

    std::unique_ptr<FakeBusService> startPortal(const char *scheme = "(<<uint32 2>>,)")
    {
        auto started = service(desktop);
        started->on("Read", scheme); // as portals do it: a variant in a variant
        for (const char *question : {"AccessCamera", "OpenURI"})
            started->on(question, [this](GVariant *arguments) { return ask(arguments); });
        return started;
    }
    Reply ask(GVariant *arguments)
    {
        const gsize last = g_variant_n_children(arguments) - 1;
        const Variant options = takeVariant(g_variant_get_child_value(arguments, last));
        const char *token = "none";
        g_variant_lookup(options.get(), "handle_token", "&s", &token);
        tokens.emplace_back(token);
        if (response)
            respond(tokens.size() - 1, *response);
        return {g_variant_new("(o)", (requests + tokens.back()).c_str())};
    }
    void respond(std::size_t question, guint32 with) const
    {
        portal->emit(requests + tokens.at(question), "org.freedesktop.portal.Request", "Response",
                     g_variant_new("(ua{sv})", with, nullptr));
    }
    void tap(std::optional<guint32> user = {})
    {
        response = user;
        camera->requestAccess([this, number = ++taps](bool granted) {
            answers += std::to_string(number) + (granted ? "+" : "-");
        });
    }
    bool comes(const std::string &expected)
    {
        return main.runUntil([&] { return answers.size() >= expected.size(); }) && answers == expected;
    }
    bool isAsked(std::size_t questions)
    {
        return main.runUntil([&] { return tokens.size() == questions; });
    }
    void change(const char *key, GVariant *value) const
    {
        portal->emit(path, "org.freedesktop.portal.Settings", "SettingChanged",
                     g_variant_new("(ssv)", "org.freedesktop.appearance", key, value));
    }
    /// What a thread that is not main is told, while main serves its queue.
    template <typename Question> auto away(Question question)
    {
        std::optional<decltype(question())> told;
        const std::jthread asker([&] { main.async([&told, answer = question()] { told.emplace(answer); }); });
        REQUIRE(main.runUntil([&] { return told.has_value(); }));
        return *told;
    }
};

} // namespace

TEST_CASE_FIXTURE(PortalFixture, "the portal says dark or light, also when it is started anew")
{
    Schemes heard;
    const auto comes = [&](const Schemes &expected) {
        return main.runUntil([&] { return heard.size() >= expected.size(); }) && heard == expected;
    };
    PortalAppearance appearance(session);
    appearance.observe([&](ColorScheme scheme) { heard.push_back(scheme); });
    REQUIRE(comes({ColorScheme::Light}));
    change("contrast", g_variant_new_uint32(1)); // of no concern
    change("color-scheme", g_variant_new_uint32(1));
    change("color-scheme", g_variant_new_string("dark")); // not a number
    REQUIRE(comes({ColorScheme::Light, ColorScheme::Dark, ColorScheme::NoPreference}));
    portal.reset();
    portal = startPortal("(<<uint32 1>>,)");
    REQUIRE(comes({ColorScheme::Light, ColorScheme::Dark, ColorScheme::NoPreference, ColorScheme::Dark}));
}

TEST_CASE_FIXTURE(PortalFixture, "from a sandbox the portal opens what may be opened, or the reason is said")
{
    int ownPages = 0;
    PortalURLOpener opener({session, console, [&] { ++ownPages; }});
    const auto open = [&](const std::string &url, std::optional<guint32> user) {
        response = user;
        opener.openURL(url);
        settle(session, desktop);
        settle(session, desktop); // what the answer to the first has led to
    };
    CHECK(opener.canOpenURL("mailto:help@example.org"));
    CHECK_FALSE(opener.canOpenURL("file:///etc/passwd"));
    open("app-settings:", 2);
    CHECK(ownPages == 1);
    open("https://example.org/", 0);
    open("mailto:help@example.org", 1); // the user has changed his mind
    CHECK(console.reports().empty());
    open("file:///etc/passwd", 0);
    open("appstream:skyflare", 2);
    open("https://example.org/slow", {});
    REQUIRE(tokens.size() == 4);
    CHECK(portal->calls()[0].starts_with("OpenURI ('', 'https://example.org/', {"));
    portal.reset(); // with the question open
    REQUIRE(main.runUntil([&] { return console.reports().size() == 3; }));
    CHECK(console.reports() == Texts{"This address is not opened: file:///etc/passwd",
                                     "Nothing opens appstream:skyflare",
                                     "Nothing opens https://example.org/slow: the desktop portal has gone"});
}

TEST_CASE_FIXTURE(PortalFixture, "each tap asks for the camera until the user has said yes")
{
    tap(1); // cancelled
    REQUIRE(comes("1-"));
    tap(2); // refused
    REQUIRE(comes("1-2-"));
    CHECK(camera->authorizationStatus() == Status::NotDetermined);
    tap(); // is not answered
    REQUIRE(isAsked(3));
    tap();
    REQUIRE(isAsked(4));
    respond(2, 1); // too late
    respond(3, 0);
    REQUIRE(comes("1-2-4+"));
    CHECK(camera->authorizationStatus() == Status::Authorized);
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(PortalFixture, "a portal that goes, comes back or knows no cameras is a no, said once")
{
    tap();
    REQUIRE(isAsked(1));
    portal.reset(); // with the question open
    REQUIRE(comes("1-"));
    CHECK(console.reports() == Texts{"The camera cannot be asked for: the desktop portal has gone"});
    tap();
    REQUIRE(comes("1-2-"));
    portal = startPortal();
    tap(0);
    REQUIRE(comes("1-2-3+"));
    portal = nullptr;
    portal = service(desktop); // without a backend for it
    tap();
    REQUIRE(comes("1-2-3+4-"));
    CHECK(camera->authorizationStatus() == Status::NotDetermined);
    CHECK(console.reports().size() == 1);
}

TEST_CASE_FIXTURE(PortalFixture, "each run has a connection of its own, and a refusal is asked about anew")
{
    const auto isPresent = [&] { return camera->isCameraPresent(); };
    const auto openRemote = [&] { return camera->openPipeWireRemote(); };
    CHECK(away(isPresent) == std::nullopt);
    portal->on("Get", "(<false>,)");
    CHECK(away(isPresent) == false);
    tap(0);
    REQUIRE(comes("1+"));
    portal->on("OpenPipeWireRemote", [](auto) {
        return Reply{.values = g_variant_new("(h)", 0), .file = open("/dev/zero", O_RDONLY | O_CLOEXEC)};
    });
    const auto first = away(openRemote);
    const auto second = away(openRemote);
    REQUIRE((first && second));
    CHECK((*first)->descriptor != (*second)->descriptor);
    char byte = 'x';
    CHECK(read((*second)->descriptor, &byte, 1) == 1);
    CHECK(byte == 0);
    PortalCamera hasty(session, console, 0ms);
    CHECK(hasty.openPipeWireRemote().error().message == "the desktop portal does not answer");
    settle(session, desktop); // its answer has come
    portal->on("OpenPipeWireRemote", [](auto) { return Reply{.error = "org.example.NotAllowed"}; });
    CHECK(away(openRemote).error().message == "as the test wants it");
    CHECK(camera->authorizationStatus() == Status::NotDetermined);
}

TEST_CASE_FIXTURE(PortalFixture, "before anything else a portal hears which app calls it")
{
    auto greeting = portalRegistration("org.skyflare.Skyflare");
    REQUIRE(greeting);
    greeting->call.longestWait = BusCall::forEver; // a slow machine is no answer
    MessageBus known(MessageBus::Kind::Session, {thread, main, console, greeting});
    camera = std::make_shared<PortalCamera>(known, console);
    portal->on("Register", [&](auto) { return Reply{}; }); // silence, for the portal's whole life
    tap();
    REQUIRE(main.runUntil([&] { return portal->count("Register") == 1; }));
    settle(session, desktop);
    CHECK(portal->calls() == Texts{"Register ('org.skyflare.Skyflare', {})"}); // the question waits
    portal.reset();
    REQUIRE(comes("1-")); // and does not wait for ever
    tap();
    REQUIRE(comes("1-2-")); // there is nobody to greet

    portal = startPortal();
    portal->on("Register", [](auto) { return Reply{.error = "org.freedesktop.portal.Error.Failed"}; });
    tap(0);
    REQUIRE(comes("1-2-3+"));
    tap(0);
    REQUIRE(comes("1-2-3+4+"));
    REQUIRE(portal->calls().size() == 3);
    CHECK(portal->calls()[0].starts_with("Register "));

    portal = nullptr;
    portal = startPortal(); // an older one, which does not know it
    tap(0);
    REQUIRE(comes("1-2-3+4+5+"));
    CHECK(console.reports().back() == "The desktop's portals do not know the app: as the test wants it");
}
