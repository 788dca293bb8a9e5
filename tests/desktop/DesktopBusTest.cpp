#include "platform/linux/LogindSession.h"
#include "platform/linux/NotificationStoreReview.h"
#include "tests/desktop/BusFixture.h"
#include "tests/fakes/RecordingDesktop.h"

#include <doctest/doctest.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

using namespace skyflare;

namespace {

using Texts = std::vector<std::string>;

constexpr const char *example = "org.example.Service";
constexpr const char *notifications = "org.freedesktop.Notifications";
constexpr const char *logind = "org.freedesktop.login1";

BusCall exampleCall(const char *method)
{
    return {example, "/a", example, method, {}, "(s)"};
}

/// What its delay locks are to a logind: a pipe that hangs up when the lock is let go of.
struct DelayLocks {
    std::vector<int> pipes;

    FakeBusService::Reply take()
    {
        int ends[2];
        REQUIRE(pipe2(ends, O_CLOEXEC) == 0);
        pipes.push_back(ends[0]);
        return {.values = g_variant_new("(h)", 0), .file = ends[1]};
    }
    [[nodiscard]] bool isHeld(std::size_t index) const
    {
        pollfd watched{pipes.at(index), POLLIN, 0};
        return poll(&watched, 1, 0) == 0;
    }
    ~DelayLocks()
    {
        for (const int pipe : pipes)
            close(pipe);
    }
};

struct LogindFixture : BusFixture {
    DelayLocks locks;
    std::vector<std::shared_ptr<const void>> delays;
    std::string heard; ///< L(ocked), U(nlocked), W(oken)
    std::shared_ptr<LogindSession> userSession = std::make_shared<LogindSession>(system, console);

    void observe()
    {
        userSession->observe({.willSleep = [this](auto delay) { delays.push_back(std::move(delay)); },
                              .didWake = [this] { heard += 'W'; },
                              .didLock = [this] { heard += 'L'; },
                              .didUnlock = [this] { heard += 'U'; }});
    }
    std::unique_ptr<FakeBusService> startLogind()
    {
        auto started = service(logind);
        started->on("Inhibit", [this](auto) { return locks.take(); });
        started->on("GetSession",
                    [](auto) { return Reply{g_variant_new("(o)", "/org/freedesktop/login1/session/_32")}; });
        return started;
    }
    static void prepareForSleep(FakeBusService &service, gboolean sleeps)
    {
        service.emit("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                     g_variant_new("(b)", sleeps));
    }
    static void setLockedHint(FakeBusService &service, gboolean isLocked)
    {
        service.emit("/org/freedesktop/login1/session/_32", "org.freedesktop.DBus.Properties",
                     "PropertiesChanged",
                     g_variant_new_parsed("('org.freedesktop.login1.Session', {'LockedHint': <%b>}, @as [])",
                                          isLocked));
    }
};

struct ReviewFixture : BusFixture {
    TemporaryFolder folder;
    RecordingURLOpener opener;
    std::shared_ptr<DesktopNotifications> shown = std::make_shared<DesktopNotifications>(session, "skyflare");

    std::shared_ptr<NotificationStoreReview> review(const std::string &version)
    {
        return std::make_shared<NotificationStoreReview>(NotificationStoreReview::Services{
            shown, opener, console, folder / "review.plist", version, "https://store.example/"});
    }
    /// A notification service that numbers from 7 on.
    std::unique_ptr<FakeBusService> startService(const char *capabilities)
    {
        auto started = service(notifications);
        started->on("GetCapabilities",
                    [capabilities](auto) { return Reply{g_variant_new_parsed(capabilities)}; });
        started->on("Notify", [next = 7U](auto) mutable { return Reply{g_variant_new("(u)", next++)}; });
        return started;
    }
    static void choose(FakeBusService &service, unsigned id)
    {
        service.emit("/org/freedesktop/Notifications", notifications, "ActionInvoked",
                     g_variant_new("(us)", id, "review"));
    }
};

} // namespace

TEST_CASE_FIXTURE(BusFixture,
                  "a call comes to one end; signals are heard until one lets go, also of a new service")
{
    auto asked = service(example);
    asked->on("Echo", [](auto) { return Reply{g_variant_new("(s)", "hello")}; });
    asked->on("Number", [](auto) { return Reply{g_variant_new("(u)", 1U)}; });
    asked->on("Fail", [](auto) { return Reply{.error = "org.example.Broken"}; });
    asked->on("Silent", [](auto) { return Reply{}; });
    Texts ends;
    const auto end = [&](const Result<BusAnswer> &answer) {
        CHECK(main.isCurrent());
        ends.push_back(answer ? "answer" : isMissing(answer.error()) ? "missing" : answer.error().domain);
    };
    for (const char *method : {"Silent", "Echo", "Number", "Fail", "Unknown"})
        session.call(exampleCall(method), end);
    REQUIRE(main.runUntil([&] { return ends.size() == 4 && asked->count("Silent") == 1; }));
    CHECK(ends == Texts{"answer", "g-io-error-quark", "org.example.Broken", "missing"});

    int heard = 0;
    auto subscription =
        session.subscribe({example, {}, example, "Rang", "(s)", {}}, [&](auto &) { ++heard; });
    settle(session, example);
    asked.reset(); // before it has answered
    REQUIRE(main.runUntil([&] { return ends.size() == 5; }));
    CHECK(ends.back() == "org.freedesktop.DBus.Error.NoReply");
    session.call(exampleCall("Echo"), end);
    REQUIRE(main.runUntil([&] { return ends.size() == 6; }));
    CHECK(ends.back() == "missing");

    asked = service(example);
    asked->emit("/a", example, "Rang", g_variant_new("(u)", 1U)); // not as agreed
    asked->emit("/a", example, "Rang", g_variant_new("(s)", "once"));
    REQUIRE(main.runUntil([&] { return heard == 1; }));
    subscription.reset();
    asked->emit("/a", example, "Rang", g_variant_new("(s)", "again"));
    settle(session, example);
    CHECK(heard == 1);
    session.call(exampleCall("Silent"), end); // the end does not wait for it
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(BusFixture, "a bus that goes or is not there is said once, and found again when it is back")
{
    int missing = 0;
    int answers = 0;
    int heard = 0;
    const auto end = [&](const Result<BusAnswer> &answer) {
        (answer ? answers : missing) += 1;
        CHECK((answer || isMissing(answer.error())));
    };
    const auto subscription =
        session.subscribe({example, {}, example, "Rang", "()", {}}, [&](auto &) { ++heard; });
    settle(session, example);
    bus.kill();
    for (int calls = 1; calls <= 3; ++calls) {
        session.call(exampleCall("Echo"), end);
        REQUIRE(main.runUntil([&] { return missing == calls; }));
    }
    REQUIRE(console.reports().size() == 1);
    CHECK(console.reports()[0].starts_with("There is no session bus, and so none of its services: "));

    const PrivateBus other;
    FakeBusService back(other, example, main);
    back.on("Echo", [](auto) { return Reply{g_variant_new("(s)", "hello")}; });
    session.call(exampleCall("Echo"), end);
    REQUIRE(main.runUntil([&] { return answers == 1; }));
    back.emit("/a", example, "Rang", g_variant_new("()"));
    CHECK(main.runUntil([&] { return heard == 1; }));
    CHECK(console.reports().size() == 1);
}

TEST_CASE_FIXTURE(LogindFixture, "the machine waits before it sleeps until the delay is let go of")
{
    auto running = startLogind();
    observe();
    REQUIRE(main.runUntil([&] { return locks.pipes.size() == 1; }));
    settle(system, logind);
    CHECK(running->calls() == Texts{"GetSession ('auto',)",
                                    "Inhibit ('sleep', 'Skyflare', 'A run ends and its photos are stored', "
                                    "'delay')"});
    prepareForSleep(*running, TRUE);
    REQUIRE(main.runUntil([&] { return delays.size() == 1; }));
    CHECK(locks.isHeld(0));
    delays.clear();
    CHECK_FALSE(locks.isHeld(0));
    prepareForSleep(*running, FALSE);
    REQUIRE(main.runUntil([&] { return locks.pipes.size() == 2; }));
    CHECK(heard == "W");

    running->emit("/org/freedesktop/login1/session/_31", "org.freedesktop.login1.Session", "Lock", nullptr);
    running->emit("/org/freedesktop/login1/session/_32", "org.freedesktop.login1.Session", "Lock", nullptr);
    setLockedHint(*running, TRUE);
    setLockedHint(*running, FALSE);
    running->emit("/org/freedesktop/login1/session/_32", "org.freedesktop.login1.Session", "Unlock", nullptr);
    REQUIRE(main.runUntil([&] { return heard.size() == 5; }));
    CHECK(heard == "WLLUU");

    running.reset();
    running = startLogind();
    REQUIRE(main.runUntil([&] { return locks.pipes.size() == 3; }));
    settle(system, logind);
    CHECK(locks.isHeld(2));
    userSession.reset();
    CHECK_FALSE(locks.isHeld(2));
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(LogindFixture, "a logind that grants no delay still says when the machine sleeps")
{
    auto running = startLogind();
    SUBCASE("it refuses")
    {
        running->on("Inhibit", [](auto) { return Reply{.error = "org.example.No"}; });
    }
    SUBCASE("it says nothing")
    {
        running->on("Inhibit", [](auto) { return Reply{}; });
    }
    observe();
    for (std::size_t times = 1; times <= 2; ++times) {
        REQUIRE(main.runUntil([&] { return running->count("Inhibit") == times; }));
        settle(system, logind);
        prepareForSleep(*running, TRUE);
        prepareForSleep(*running, FALSE);
        REQUIRE(main.runUntil([&] { return delays.size() == times; }));
    }
    CHECK(delays[0] == nullptr);
    CHECK(console.reports().size() <= 1);
}

TEST_CASE_FIXTURE(ReviewFixture,
                  "a review is asked for once a version, and its page opened when that is chosen")
{
    auto running = startService("(['body', 'actions'],)");
    const auto first = review("1.0");
    first->requestReview();
    first->requestReview(); // the desktop has not answered yet
    REQUIRE(main.runUntil([&] { return std::filesystem::exists(folder / "review.plist"); }));
    first->requestReview();
    review("1.0")->requestReview();
    settle(session, notifications);
    REQUIRE(running->calls().size() == 2);
    CHECK(running->calls()[1] ==
          "Notify ('Skyflare', 0, 'skyflare', 'Do you like Skyflare?', 'Tell others what you think of it.', "
          "['default', 'Write a Review', 'review', 'Write a Review'], {'desktop-entry': <'skyflare'>}, -1)");
    choose(*running, 6); // another program's
    choose(*running, 7);
    choose(*running, 7);
    REQUIRE(main.runUntil([&] { return !opener.opened.empty(); }));

    const auto next = review("1.1");
    next->requestReview();
    REQUIRE(main.runUntil([&] { return running->count("Notify") == 2; }));
    settle(session, notifications);
    running.reset();
    running = startService("(['actions'],)");
    settle(session, notifications);
    choose(*running, 8); // this service's own
    settle(session, notifications);
    CHECK(opener.opened == Texts{"https://store.example/"});
}

TEST_CASE_FIXTURE(ReviewFixture, "a review that cannot be asked for, or given, does not count as asked")
{
    const auto asked = review("1.0");
    const auto settledIsNotAsked = [&] {
        asked->requestReview();
        settle(session, notifications);
        settle(session, notifications); // what the first answer has led to
        return !std::filesystem::exists(folder / "review.plist");
    };
    CHECK(settledIsNotAsked()); // there is no service
    {
        const auto running = startService("(['body'],)");
        CHECK(settledIsNotAsked());
        CHECK(running->count("Notify") == 0);
    }
    const auto running = startService("(['actions'],)");
    running->on("Notify", [](auto) { return Reply{.error = "org.example.Full"}; });
    CHECK(settledIsNotAsked());
    CHECK(running->count("Notify") == 1);
    opener.opensNothing = true;
    CHECK(settledIsNotAsked());
    CHECK(running->count("GetCapabilities") == 1);
    CHECK(console.reports().empty());
}
