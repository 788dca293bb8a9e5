#include "platform/linux/LogindSession.h"
#include "tests/desktop/BusFixture.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <deque>

using namespace skyflare;

namespace {

constexpr const char *example = "org.example.Service";
constexpr const char *logind = "org.freedesktop.login1";
constexpr const char *ours = "/org/freedesktop/login1/session/_32";

BusCall exampleCall(const char *method)
{
    return {example, "/a", example, method, {}, "(s)", BusCall::forEver};
}

/// What its delay locks are to a logind: a pipe that hangs up when the lock is let go of.
struct DelayLocks {
    std::deque<OpenFile> pipes;

    FakeBusService::Reply take()
    {
        int ends[2];
        REQUIRE(pipe2(ends, O_CLOEXEC) == 0);
        pipes.emplace_back(ends[0]);
        return {.values = g_variant_new("(h)", 0), .file = ends[1]};
    }
    [[nodiscard]] bool isHeld(std::size_t index) const
    {
        pollfd watched{pipes.at(index).descriptor, POLLIN, 0};
        return poll(&watched, 1, 0) == 0;
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
        started->on("GetSession", "(objectpath '/org/freedesktop/login1/session/_32',)");
        return started;
    }
    static void prepareForSleep(FakeBusService &service, gboolean sleeps)
    {
        service.emit("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                     g_variant_new("(b)", sleeps));
    }
    static void setLockedHint(FakeBusService &service, gboolean isLocked)
    {
        service.emit(ours, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                     g_variant_new_parsed("('org.freedesktop.login1.Session', {'LockedHint': <%b>}, @as [])",
                                          isLocked));
    }
    static void say(FakeBusService &service, const char *session, const char *signal)
    {
        service.emit(session, "org.freedesktop.login1.Session", signal, nullptr);
    }
};

} // namespace

TEST_CASE_FIXTURE(BusFixture,
                  "a call comes to one end; signals are heard until one lets go, also of a new one")
{
    auto asked = service(example);
    asked->on("Echo", "('hello',)");
    asked->on("Number", "(1,)");
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
    back.on("Echo", "('hello',)");
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

    say(*running, "/org/freedesktop/login1/session/_31", "Lock"); // another's
    say(*running, ours, "Lock");
    setLockedHint(*running, TRUE);
    setLockedHint(*running, FALSE);
    say(*running, ours, "Unlock");
    REQUIRE(main.runUntil([&] { return heard.size() == 5; }));
    CHECK(heard == "WLLUU");

    running.reset();
    running = startLogind();
    REQUIRE(main.runUntil([&] { return locks.pipes.size() == 3; }));
    settle(system, logind);
    CHECK(locks.isHeld(2));
    CHECK(console.reports().empty());
    userSession.reset();
    CHECK_FALSE(locks.isHeld(2));

    userSession = std::make_shared<LogindSession>(system, console);
    running->on("Inhibit", [](auto) { return Reply{.error = "org.example.No"}; });
    observe();
    settle(system, logind);
    for (int nights = 0; nights < 2; ++nights) { // it still says when the machine sleeps
        prepareForSleep(*running, TRUE);
        prepareForSleep(*running, FALSE);
    }
    REQUIRE(main.runUntil([&] { return delays.size() == 2; }));
    CHECK(delays[1] == nullptr);
    settle(system, logind);
    CHECK(console.reports() == Texts{"The machine may sleep before a run has ended: as the test wants it"});
}
