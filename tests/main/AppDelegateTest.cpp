#include "app/AppDelegate.h"

#include "app/SceneDelegate.h"
#include "app/SessionActivity.h"
#include "app/WindowActivity.h"
#include "screens/main/MainViewController.h"
#include "store/PhotoEntity.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingDesktop.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"
#include "tests/ui/Sampler.h"

#include <doctest/doctest.h>

#include <QGuiApplication>
#include <QTest>
#include <thread>

using namespace skyflare;

namespace {

using Lines = std::vector<std::string>;

/// What App::shared() is made with lives as long as the process.
struct SharedSettings {
    TemporaryFolder folder;
    RecordingConsole console;
    NotificationCenter notifications;
    UserDefaults defaults{folder / "settings.plist", console};

    SharedSettings() { App::setSharedServices({defaults, notifications, console}); }
    static SharedSettings &get()
    {
        static SharedSettings settings;
        return settings;
    }
};

struct Delegate {
    SharedSettings &settings = SharedSettings::get();
    TemporaryFolder folder;
    RecordingConsole console;
    VirtualTime time;
    RecordingNotifications notifications;
    RecordingRemoteNotifications remoteNotifications;
    FIRApp firApp{FIROptions{}};
    Lines steps;
    AppDelegate delegate{{.firApp = firApp,
                          .notificationCenter = notifications,
                          .remoteNotifications = remoteNotifications,
                          .console = console,
                          .storageQueue = time.globalUserInitiated(),
                          .storageFolder = folder.path(),
                          .makeWindow = [] { return std::make_shared<Window>(); },
                          .makeFirstScreen = [this]() -> std::shared_ptr<ViewController> {
                              steps.emplace_back("screen");
                              return Sampler::storyboard().instantiateViewController("SamplerView");
                          }}};
};

/// An app's activity, and what it tells.
struct Heard {
    NotificationCenter center;
    std::string all; ///< A(ctive) or R(esigned) each time
    NotificationCenter::Observation becomes =
        center.addObserver("UIApplicationDidBecomeActiveNotification", [this] { all += 'A'; });
    NotificationCenter::Observation resigns =
        center.addObserver("UIApplicationWillResignActiveNotification", [this] { all += 'R'; });
    AppActivity activity{center};
};

} // namespace

TEST_CASE_FIXTURE(Delegate, "the app comes up in its order, with one window that the scene takes over")
{
    CHECK(settings.defaults.floatForKey("sensivity") == 0.1f); // since the delegate was made
    firApp.registerComponent([this](const FIROptions &) {
        steps.emplace_back("cloud");
        CHECK(delegate.window()->quickWindow().isVisible());
        CHECK(notifications.delegate == nullptr);
    });
    CHECK(delegate.didFinishLaunching());
    CHECK(steps == Lines{"screen", "cloud"});
    CHECK(notifications.delegate == &delegate);
    REQUIRE(notifications.waiting.size() == 1);
    notifications.waiting[0](false, std::nullopt);
    REQUIRE(remoteNotifications.waiting.size() == 1); // whatever that answer is
    remoteNotifications.waiting[0](Error{"push", 3, "nobody distributes"});
    CHECK(console.lines() ==
          Lines{"Permission granted: false", "Failed to register: nobody distributes (push 3)"});
    remoteNotifications.waiting[0](Bytes{1, 2});
    CHECK(FIRMessaging::messaging().APNSToken() == Bytes{1, 2});

    SceneDelegate scene;
    scene.willConnectToSession(nullptr);
    CHECK(scene.window() == nullptr);
    scene.willConnectToSession(delegate.window());
    CHECK(scene.window() == delegate.window());
}

TEST_CASE_FIXTURE(Delegate, "the container is made on first use, once, by whichever thread comes first")
{
    const auto file = folder / "Storage.sqlite";
    CHECK_FALSE(std::filesystem::exists(file));
    PersistentContainer *ofOther = nullptr;
    std::thread other([&] { ofOther = &delegate.persistentContainer(); });
    PersistentContainer &ours = delegate.persistentContainer();
    other.join();
    CHECK(ofOther == &ours);
    CHECK(std::filesystem::exists(file));
}

TEST_CASE("the app is active until the first reason arises against it, and again when the last has gone")
{
    using Reason = AppActivity::Reason;
    Heard heard;
    AppActivity &activity = heard.activity;
    const auto goes = [&](Reason reason) { return activity.goes(reason), heard.all; };
    const auto arises = [&](Reason reason) { return activity.arises(reason), heard.all; };
    const auto userIsHere = [&] { return activity.userIsHere(), heard.all; };
    CHECK(goes(Reason::SessionLocked).empty()); // not shown yet
    CHECK_FALSE(activity.isActive());
    CHECK(goes(Reason::WindowHidden) == "A");
    CHECK(goes(Reason::WindowHidden) == "A");
    CHECK(activity.isActive());
    CHECK(arises(Reason::SessionLocked) == "AR");
    CHECK(arises(Reason::SessionLocked) == "AR");
    CHECK_FALSE(activity.isActive());
    CHECK(arises(Reason::MachineAsleep) == "AR");
    CHECK(goes(Reason::SessionLocked) == "AR");
    CHECK(goes(Reason::MachineAsleep) == "ARA");
    CHECK(arises(Reason::OtherAppInFront) == "ARAR");
    CHECK(arises(Reason::SessionLocked) == "ARAR");
    CHECK(userIsHere() == "ARARA");
    CHECK(arises(Reason::ProgramEnding) == "ARARAR");
    CHECK(arises(Reason::WindowHidden) == "ARARAR");
    CHECK(userIsHere() == "ARARAR");
}

TEST_CASE("the app resigns while its session is locked or sleeps, and the machine waits for the photos")
{
    struct Session final : UserSession {
        Handlers handlers;
        void observe(Handlers wanted) override { handlers = std::move(wanted); }
    } session;
    Heard heard;
    heard.activity.goes(AppActivity::Reason::WindowHidden);
    std::shared_ptr<const void> kept;
    auto activity = std::make_shared<SessionActivity>(heard.activity, [&](std::shared_ptr<const void> delay) {
        CHECK(heard.all == "AR"); // what the run still takes counts, too
        kept = std::move(delay);
    });
    activity->observe(session);
    const auto delay = std::make_shared<int>();
    session.handlers.willSleep(delay);
    CHECK(kept == delay);
    session.handlers.didLock();
    session.handlers.didWake();
    CHECK(heard.all == "AR");
    session.handlers.didUnlock();
    CHECK(heard.all == "ARA");
    activity.reset();
    session.handlers.didLock();
    CHECK(heard.all == "ARA");
}

TEST_CASE("the app resigns while its window is away, on a phone also while another app is before it")
{
    Heard heard;
    Window window;
    const WindowActivity activity(window.quickWindow(), heard.activity, WindowActivity::Shell::Desktop);
    CHECK(heard.all.empty());
    window.makeKeyAndVisible();
    CHECK(heard.all == "A");
    window.quickWindow().hide();
    window.quickWindow().showMinimized();
    CHECK(heard.all == "AR");
    window.quickWindow().showNormal();
    CHECK(heard.all == "ARA");
    emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive); // the keyboard is elsewhere
    CHECK(heard.all == "ARA");

    Heard onPhone;
    const WindowActivity phone(window.quickWindow(), onPhone.activity, WindowActivity::Shell::Phone);
    CHECK(onPhone.all == "A"); // the window is there already
    emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    CHECK(onPhone.all == "AR");
    emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    CHECK(onPhone.all == "ARA");

    QCoreApplication::processEvents(); // what the window system has still to say
    heard.all.clear();
    heard.activity.arises(AppActivity::Reason::SessionLocked); // by a locker that never says when it has gone
    QTest::keyClick(&window.quickWindow(), Qt::Key_Space);
    CHECK(heard.all == "RA");

    CHECK(WindowActivity::shellFor("Phosh:GNOME", nullptr) == WindowActivity::Shell::Phone);
    CHECK(WindowActivity::shellFor("KDE", "phone:handset") == WindowActivity::Shell::Phone);
    CHECK(WindowActivity::shellFor("GNOME", nullptr) == WindowActivity::Shell::Desktop);
    CHECK(WindowActivity::shellFor(nullptr, nullptr) == WindowActivity::Shell::Desktop);
}
