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
    FIRApp firApp{{}, console};
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
                              return Sampler::storyboard().instantiateViewController("PlainView");
                          }}};
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

TEST_CASE("the app resigns when its session is locked or sleeps, and the machine waits for the photos")
{
    struct Session final : UserSession {
        Handlers handlers;
        void observe(Handlers wanted) override { handlers = std::move(wanted); }
    } session;
    NotificationCenter center;
    int resigned = 0;
    const auto observation =
        center.addObserver("UIApplicationWillResignActiveNotification", [&] { ++resigned; });
    std::shared_ptr<const void> kept;
    auto activity = std::make_shared<SessionActivity>(center, [&](std::shared_ptr<const void> delay) {
        CHECK(resigned == 1); // what the run still takes counts, too
        kept = std::move(delay);
    });
    activity->observe(session);
    const auto delay = std::make_shared<int>();
    session.handlers.willSleep(delay);
    CHECK(kept == delay);
    session.handlers.didLock();
    CHECK(resigned == 2);
    activity.reset();
    session.handlers.didLock();
    CHECK(resigned == 2);
}

TEST_CASE("the app resigns when its window is away, on a phone also when another app is before it")
{
    NotificationCenter center;
    int resigned = 0;
    const auto observation =
        center.addObserver("UIApplicationWillResignActiveNotification", [&] { ++resigned; });
    Window window;
    const WindowActivity activity(window.quickWindow(), center, WindowActivity::Shell::Desktop);
    window.makeKeyAndVisible();
    CHECK(resigned == 0);
    window.quickWindow().hide();
    CHECK(resigned == 1);
    window.quickWindow().showMinimized();
    CHECK(resigned == 2);
    emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive); // the keyboard is elsewhere
    CHECK(resigned == 2);
    const WindowActivity onPhone(window.quickWindow(), center, WindowActivity::Shell::Phone);
    emit qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    CHECK(resigned == 3);

    CHECK(WindowActivity::shellFor("Phosh:GNOME", nullptr) == WindowActivity::Shell::Phone);
    CHECK(WindowActivity::shellFor("KDE", "phone:handset") == WindowActivity::Shell::Phone);
    CHECK(WindowActivity::shellFor("GNOME", nullptr) == WindowActivity::Shell::Desktop);
    CHECK(WindowActivity::shellFor(nullptr, nullptr) == WindowActivity::Shell::Desktop);
}
