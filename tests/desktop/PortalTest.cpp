#include "platform/linux/PortalAppearance.h"
#include "platform/linux/PortalURLOpener.h"
#include "tests/desktop/BusFixture.h"

#include <doctest/doctest.h>

#include <vector>

using namespace skyflare;

namespace {

using Texts = std::vector<std::string>;
constexpr const char *desktop = "org.freedesktop.portal.Desktop";

using Schemes = std::vector<ColorScheme>;

struct PortalFixture : BusFixture {
    std::unique_ptr<FakeBusService> portal = startPortal(2);

    std::unique_ptr<FakeBusService> startPortal(guint32 scheme)
    {
        auto started = service(desktop);
        started->on("Read", [scheme](auto) { // as portals do it: a variant in a variant
            return Reply{g_variant_new("(v)", g_variant_new_variant(g_variant_new_uint32(scheme)))};
        });
        return started;
    }
    void change(const char *key, GVariant *value)
    {
        portal->emit("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged",
                     g_variant_new("(ssv)", "org.freedesktop.appearance", key, value));
    }
    /// The user's answer to the newest question.
    void respond(const std::string &token, guint32 response)
    {
        portal->emit("/org/freedesktop/portal/desktop/request/1_9/" + token, "org.freedesktop.portal.Request",
                     "Response", g_variant_new("(ua{sv})", response, nullptr));
    }
};

} // namespace

TEST_CASE_FIXTURE(PortalFixture,
                  "the portal is asked for dark or light, and heard, also when it is started anew")
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
    REQUIRE(comes({ColorScheme::Light, ColorScheme::Dark}));
    change("color-scheme", g_variant_new_string("dark")); // not a number
    REQUIRE(comes({ColorScheme::Light, ColorScheme::Dark, ColorScheme::NoPreference}));
    portal.reset();
    portal = startPortal(1);
    REQUIRE(comes({ColorScheme::Light, ColorScheme::Dark, ColorScheme::NoPreference, ColorScheme::Dark}));
}

TEST_CASE_FIXTURE(PortalFixture, "from a sandbox the portal opens what may be opened, or the reason is said")
{
    int ownPages = 0;
    PortalURLOpener opener({session, console, [&] { ++ownPages; }});
    Texts asked;
    std::optional<guint32> response; // of a user who is quicker than the call
    portal->on("OpenURI", [&](GVariant *arguments) {
        const char *url = nullptr;
        GVariant *options = nullptr;
        g_variant_get(arguments, "(s&s@a{sv})", nullptr, &url, &options);
        const char *token = nullptr;
        g_variant_lookup(options, "handle_token", "&s", &token);
        asked.emplace_back(url);
        if (response)
            respond(token, *response);
        g_variant_unref(options);
        return Reply{g_variant_new("(o)", "/org/freedesktop/portal/desktop/request/1_9/t")};
    });
    const auto open = [&](const std::string &url) {
        opener.openURL(url);
        settle(session, desktop);
        settle(session, desktop); // what the answer to the first has led to
    };
    CHECK(opener.canOpenURL("mailto:help@example.org"));
    CHECK_FALSE(opener.canOpenURL("file:///etc/passwd"));
    open("app-settings:");
    CHECK(ownPages == 1);
    response = 0;
    open("https://example.org/");
    response = 1; // the user has changed his mind
    open("mailto:help@example.org");
    CHECK(console.reports().empty());
    open("file:///etc/passwd");
    response = 2;
    open("appstream:skyflare");
    response.reset();
    open("https://example.org/slow");
    portal.reset(); // with the question open
    REQUIRE(main.runUntil([&] { return console.reports().size() == 3; }));
    open("https://example.org/late");
    CHECK(asked == Texts{"https://example.org/", "mailto:help@example.org", "appstream:skyflare",
                         "https://example.org/slow"});
    REQUIRE(console.reports().size() == 4);
    CHECK(console.reports()[0] == "This address is not opened: file:///etc/passwd");
    CHECK(console.reports()[1] == "Nothing opens appstream:skyflare");
    CHECK(console.reports()[2] == "Nothing opens https://example.org/slow: the desktop portal has gone");
    CHECK(console.reports()[3].starts_with("Nothing opens https://example.org/late: "));
}
