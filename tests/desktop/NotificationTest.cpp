#include "platform/desktop/AppNotificationCenter.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/LauncherBadge.h"
#include "platform/linux/PortalNotifications.h"
#include "tests/desktop/BusFixture.h"

#include <cstdlib>

using namespace skyflare;

namespace {

using Auth = UNAuthorizationOptions;
using Options = UNNotificationPresentationOptions;

constexpr const char *notifications = "org.freedesktop.Notifications";
constexpr const char *path = "/org/freedesktop/Notifications";
constexpr const char *portal = "org.freedesktop.portal.Desktop";

struct NotificationFixture : BusFixture, UserNotificationCenterDelegate {
    std::shared_ptr<NotificationBoard> board =
        std::make_shared<DesktopNotifications>(session, "org.example.App");
    LauncherBadge badge{session, "org.example.App"};
    Options options = Options::None; ///< the delegate's answer
    Texts responses; ///< what the user has chosen, and the tokens that brought the app to the front
    bool isInFront = false;
    std::shared_ptr<AppNotificationCenter> center = makeCenter();
    Texts ends; ///< of what was asked, and not looked at: empty, or the error
    const std::function<void(const Result<> &)> ended = [this](const auto &shown) {
        ends.push_back(shown ? "" : shown.error().domain);
    };
    Texts badges;
    MessageBus::Subscription dock =
        session.subscribe({{}, {}, "com.canonical.Unity.LauncherEntry", "Update", "(sa{sv})", {}},
                          [this](const BusSignal &signal) { badges.push_back(textOf(signal.values)); });

    void willPresentNotification(const UserNotification & /*notification*/,
                                 std::function<void(Options)> completionHandler) override
    {
        completionHandler(options);
    }
    void didReceiveNotificationResponse(const UserNotificationResponse &response,
                                        std::function<void()> /*completionHandler*/) override
    {
        responses.push_back(response.notification.identifier + " " + response.actionIdentifier);
    }
    std::shared_ptr<AppNotificationCenter> makeCenter()
    {
        auto made = std::make_shared<AppNotificationCenter>(AppNotificationCenter::Services{
            .board = board,
            .badge = badge,
            .mainQueue = main,
            .isInFront = [this] { return isInFront; },
            .bringToFront = [this](auto &token) { responses.push_back(token); }});
        made->setDelegate(this);
        return made;
    }
    /// A service that numbers from 7 on.
    std::unique_ptr<FakeBusService> startService(const char *capabilities)
    {
        auto started = service(notifications);
        started->on("GetCapabilities", capabilities);
        started->on("CloseNotification", "()");
        started->on("Notify", [next = 7U](GVariant *arguments) mutable {
            guint replaced = 0;
            g_variant_get_child(arguments, 1, "u", &replaced);
            return Reply{g_variant_new("(u)", replaced != 0 ? replaced : next++)};
        });
        return started;
    }
    /// Empty, or why not.
    std::string authorize(Auth wanted)
    {
        center->requestAuthorizationWithOptions(
            wanted, [&](bool granted, const auto &error) { ends.push_back(granted ? "" : error->domain); });
        return nextEnd();
    }
    void request(const UserNotification &notification)
    {
        center->addNotificationRequest(notification, ended);
    }
    std::string nextEnd()
    {
        REQUIRE(main.runUntil([&] { return !ends.empty(); }));
        const std::string end = ends.front();
        ends.erase(ends.begin());
        return end;
    }
    std::string add(const UserNotification &notification)
    {
        request(notification);
        return nextEnd();
    }
    /// The dock has heard that the newest number is `count`, of so many.
    [[nodiscard]] bool dockShows(std::size_t changes, const std::string &count)
    {
        return main.runUntil([&] { return badges.size() == changes; }) &&
               badges.back() == "('application://org.example.App.desktop', {'count': <int64 " + count +
                                    ">, 'count-visible': <" + (count == "0" ? "false" : "true") + ">})";
    }
};

std::string notifyCall(const std::string &replaced, const std::string &texts, const std::string &actions,
                       const std::string &hints)
{
    return "Notify ('Skyflare', " + replaced + ", 'org.example.App', " + texts + ", " + actions +
           ", {'desktop-entry': <'org.example.App'>, " + hints + "}, -1)";
}

const UserNotification example{"a", "Title", "Body"};
constexpr Auth everything = Auth::Badge | Auth::Sound | Auth::Alert;
constexpr const char *byDefault = "['default', 'Skyflare']";
constexpr const char *aloud = "'sound-name': <'message-new-instant'>";

} // namespace

TEST_CASE_FIXTURE(NotificationFixture, "a notification is shown, replaced, counted and chosen")
{
    auto running = startService("(['body', 'body-markup', 'actions'],)");
    CHECK(add(example) == "notifications"); // nobody has asked yet
    CHECK(authorize(everything).empty());
    request({"a", "1 < 2", "1 < 2 & 3"});
    request({"a", "", "Again"}); // before the first is there
    request({"", "Title", "Body"});
    CHECK((nextEnd() + nextEnd() + nextEnd()).empty());
    CHECK(running->calls() ==
          Texts{"GetCapabilities ()", "GetCapabilities ()",
                notifyCall("0", "'1 < 2', '1 &lt; 2 &amp; 3'", byDefault, aloud), "GetCapabilities ()",
                notifyCall("7", "'Skyflare', 'Again'", byDefault, aloud), "GetCapabilities ()",
                notifyCall("0", "'Title', 'Body'", byDefault, aloud)});
    CHECK(dockShows(3, "2"));

    running->emit(path, notifications, "ActivationToken", g_variant_new("(us)", 7U, "token"));
    for (const guint id : {6U, 7U, 7U}) // another program's; ours; ours again
        running->emit(path, notifications, "ActionInvoked", g_variant_new("(us)", id, "default"));
    CHECK(dockShows(4, "1"));
    settle(session, notifications);
    CHECK(responses == Texts{"token", "a "});
    center->applicationDidBecomeActive();
    center->applicationDidBecomeActive();
    CHECK(dockShows(5, "0"));

    running.reset();
    running = startService("(@as [],)"); // it counts anew, and reads no markup
    running->emit(path, notifications, "ActionInvoked", g_variant_new("(us)", 8U, "default"));
    CHECK(add({"a", "Title", "1 < 2"}).empty());
    CHECK(running->calls().back() == notifyCall("0", "'Title', '1 < 2'", "[]", aloud));
    board->show({.summary = "To be chosen", .body = {}, .actions = {{"yes", "Yes"}}}, ended, {});
    CHECK(nextEnd() == "notifications"); // nobody could
    CHECK(responses.size() == 2);
}

TEST_CASE_FIXTURE(NotificationFixture, "while the app is in front its delegate says how one is shown")
{
    const auto running = startService("(['actions'],)");
    isInFront = true;
    const auto shownAs = [&](Options wanted) {
        options = wanted;
        const std::size_t before = running->calls().size();
        CHECK(add(example).empty());
        settle(session, notifications);
        return running->calls().size() == before ? "" : running->calls().back();
    };
    const auto shown = [](const std::string &replaced, const std::string &hints) {
        return notifyCall(replaced, "'Title', 'Body'", byDefault, hints);
    };
    CHECK(authorize(everything).empty());
    CHECK(shownAs(Options::None).empty());
    CHECK(badges.empty());
    CHECK(shownAs(Options::Banner | Options::Sound | Options::Badge) ==
          shown("0", std::string(aloud) + ", 'transient': <true>"));
    CHECK(dockShows(1, "1"));
    CHECK(shownAs(Options::List) == shown("7", "'suppress-sound': <true>, 'urgency': <byte 0x00>"));
    CHECK(shownAs(Options::Sound) == "CloseNotification (7,)"); // what it takes the place of
    center->setDelegate(nullptr);
    CHECK(shownAs(Options::None) == shown("0", aloud));
    center = makeCenter();
    CHECK(authorize(Auth::Sound).empty()); // no more than that
    CHECK(shownAs(Options::Banner | Options::List | Options::Badge) == "CloseNotification (8,)");
    CHECK(badges.size() == 2);
}

TEST_CASE_FIXTURE(NotificationFixture, "a service that is missing, broken or silent is said in the answer")
{
    SUBCASE("the desktop's own") {}
    SUBCASE("the portal")
    {
        board = std::make_shared<PortalNotifications>(session);
        center = makeCenter();
    }
    CHECK(authorize(Auth::Alert) == "org.freedesktop.DBus.Error.ServiceUnknown");
    CHECK(add(example) == "org.freedesktop.DBus.Error.ServiceUnknown");
    auto own = startService("(['actions'],)");
    auto desktop = service(portal);
    own->on("Notify", [](auto) { return Reply{.error = "org.example.Full"}; });
    desktop->on("Get", [](auto) { return Reply{.error = "org.example.Full"}; });
    CHECK(add(example) == "org.example.Full");

    own->on("GetCapabilities", [](auto) { return Reply{}; });
    desktop->on("Get", [](auto) { return Reply{}; });
    for (int count = 0; count < 20; ++count)
        request({"", "Title", "Body"});
    CHECK(ends == Texts(4, "notifications")); // sixteen wait
    own.reset();
    desktop.reset();
    CHECK(main.runUntil([&] { return ends.size() == 20; }));
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(NotificationFixture, "from a sandbox the portal shows, replaces, answers and removes")
{
    const auto running = service(portal);
    guint version = 1;
    running->on("Get", [&](auto) { return Reply{g_variant_new("(v)", g_variant_new_uint32(version))}; });
    for (const char *method : {"AddNotification", "RemoveNotification"})
        running->on(method, "()");
    board = std::make_shared<PortalNotifications>(session);
    center = makeCenter();
    CHECK(authorize(everything).empty());
    const std::string content =
        "AddNotification ('a', {'title': <'Title'>, 'body': <'Body'>, 'default-action': "
        "<'default'>, 'buttons': <@aa{sv} []>";
    CHECK(add(example).empty());
    CHECK(running->calls().back() == content + "})");
    version = 2;
    isInFront = true;
    options = Options::Banner;
    CHECK(add(example).empty());
    CHECK(running->calls().back() == content + ", 'sound': <'silent'>, 'display-hint': <['transient']>})");
    for (const char *identifier : {"b", "a", "a"})
        running->emit(
            "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Notification", "ActionInvoked",
            g_variant_new_parsed("(%s, 'default', [<{'activation-token': <'token'>}>])", identifier));
    settle(session, portal);
    CHECK(responses == Texts{"token", "a "});
    for (const auto now : {Options::Banner, Options::None}) {
        options = now;
        CHECK(add(example).empty());
    }
    settle(session, portal);
    CHECK(running->calls().back() == "RemoveNotification ('a',)");
}

TEST_CASE_FIXTURE(NotificationFixture, "a notification daemon that desktops have shows one to choose")
{
    ChildProcess display({"Xvfb", "-displayfd", "1", "-nolisten", "tcp"});
    setenv("DISPLAY", (":" + display.readLine().value_or("")).c_str(), 1);
    bool isThere = false;
    const auto comes = session.watch(notifications, [&](bool is) { isThere = is; });
    settle(session, notifications);
    const TemporaryFolder settings;
    settings.write("dunstrc", "[urgency_normal]\ntimeout = 0\n"); // it stays until it is chosen
    const ChildProcess daemon({"dunst", "-conf", (settings / "dunstrc").string()});
    REQUIRE(main.runUntil([&] { return isThere; }));
    CHECK(authorize(everything).empty());
    CHECK(add({"a", "1 < 2", "Fireworks <b>tonight</b> & tomorrow"}).empty());
    CHECK(add({"a", "1 < 2", "Fireworks <b>tomorrow</b>"}).empty());
    const std::function<void()> choose = [&] { // until it has been painted
        session.call({notifications, path, "org.dunstproject.cmd0", "NotificationAction",
                      takeVariant(g_variant_new("(u)", 0U))},
                     [&](const Result<BusAnswer> &answer) {
                         CHECK(answer);
                         if (responses.empty())
                             choose();
                     });
    };
    choose();
    REQUIRE(main.runUntil([&] { return !responses.empty(); }));
    CHECK(responses.back() == "a ");
}
