#include "app/Program.h"

#include "app/ApplicationId.h"
#include "platform/base/LanguageName.h"
#include "platform/base/Localization.h"
#include "platform/camera/GstCapture.h"
#include "platform/linux/DeviceCameraAuthorization.h"
#include "platform/linux/Sandbox.h"
#include "platform/persistence/ManagedObjectContext.h"
#include "screens/gallery/PhotoDetailViewController.h"
#include "screens/gallery/PhotoListViewController.h"
#include "screens/settings/SettingsViewController.h"
#include "ui/ApplicationNotifications.h"

#include <QIcon>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace skyflare {

namespace {

constexpr int couldNotStart = 1;

/// Where the desktop has no page of settings for the app.
std::string settingsHelp()
{
    if (isSandboxed())
        return localized("Camera: let Skyflare use it in your desktop's settings, among the permissions of "
                         "apps. Language: Skyflare speaks the language of your desktop.");
    return localized(
        "Camera: your user must be allowed to open the camera's device; on most systems that takes being in "
        "the group “video”, and logging in again. Language: Skyflare speaks the language of your desktop.");
}

int complain(int status, const std::string &message)
{
    std::fprintf(stderr, "skyflare: %s\n", message.c_str());
    return status;
}

std::vector<std::string> userLanguages()
{
    return preferredLanguages([](const char *name) { return std::getenv(name); });
}

/// The language of the app's texts, as the user's own calls it.
std::string appLanguageName()
{
    const auto languages = userLanguages();
    return languageName(Localization::shared().language(), languages.empty() ? "en" : languages.front())
        .value_or(localized("Unknown"));
}

} // namespace

Program::Program(const AppOptions &options, int &argc, char **argv, CameraFinder cameraFinder,
                 ProgramFiles files)
    : options_(options),
      directories_(options.dataFolder ? UserDirectories::under(*options.dataFolder)
                                      : UserDirectories::standard()),
      files_(std::move(files)),
      application_(argc, argv),
      remoteConfig_(FIRRemoteConfig::make({.transport = transport_,
                                           .queues = queues_,
                                           .clock = clock_,
                                           .console = console_,
                                           .cacheFile = directories_.cache / "remote-config.json"})),
      desktop_({.queue = queues_.globalUserInitiated(),
                .mainQueue = mainQueue_,
                .console = console_,
                .stateFolder = directories_.state,
                .appVersion = appInfo_.shortVersion,
                .storePage = appInfo_.storePage,
                .ownSettingsPage = [this] { showSettingsHelp(); },
                .isInFront = [this] { return activity_.isActive(); },
                .random = random_,
                .showApp =
                    [this](const std::string &activationToken) {
                        if (!activationToken.empty()) // taken by the next requestActivate()
                            qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
                        showWindow();
                    }}),
      camera_(cameraServices(std::move(cameraFinder)))
{
    std::setlocale(LC_NUMERIC, "C"); // Qt has taken the user's; what we write and read has a point
    QGuiApplication::setApplicationName(QStringLiteral("skyflare"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Skyflare"));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(applicationId));
    if (QGuiApplication::platformName() == QStringLiteral("xcb")) // elsewhere the desktop file says it
        QGuiApplication::setWindowIcon(QIcon::fromTheme(QString::fromLatin1(applicationId)));
    prepareUserInterface();
    Localization::setShared(Localization::load(files_.localization, userLanguages(), console_));
    App::setSharedServices({defaults_, notificationCenter_, console_});
}

/// What main has not come to is dropped; who waits for it goes home.
Program::~Program()
{
    mainQueue_.close();
}

LaunchCamera::Services Program::cameraServices(CameraFinder cameraFinder)
{
    if (const auto portal = desktop_.portalCamera())
        cameraFinder = findInSandbox(portal, std::move(cameraFinder));
    return {
        .mainQueue = mainQueue_,
        .choose = [find = std::move(cameraFinder), name = options_.camera] { return find(name); },
        .refusedDevice = &DeviceCameraAuthorization::refusedDevice,
        .makeFramework = [this](std::shared_ptr<CameraSource> camera) -> std::unique_ptr<CaptureFramework> {
            return std::make_unique<GstCapture>(
                GstCapture::Services{.queues = queues_, .camera = std::move(camera)});
        },
        .makeAuthorization = [this](CameraChoice::Kind kind,
                                    std::filesystem::path device) -> std::shared_ptr<CameraAuthorization> {
            if (kind == CameraChoice::Kind::Remote)
                return desktop_.portalCamera();
            return std::make_shared<DeviceCameraAuthorization>(std::move(device), mainQueue_);
        }};
}

/// What begins when the cloud platform is configured.
void Program::registerComponents()
{
    firApp_.registerComponent(
        [this](const FIROptions &options) { remoteConfig_->configure(options.remoteConfigURL); });
    if (options_.noAnalytics)
        return;
    analytics_ = std::make_unique<ProgramAnalytics>(
        ProgramAnalytics::Services{queues_, clock_, console_, transport_, notificationCenter_},
        ProgramAnalytics::places(directories_, deployment_), options_.launchSwitches);
    firApp_.registerComponent([this](const FIROptions & /*options*/) { analytics_->start(); });
    tellEngine();
}

/// What the engine hears of the app's life; of its screens in makeWindow().
void Program::tellEngine()
{
    observations_.push_back(notificationCenter_.addObserver(applicationDidBecomeActiveNotification,
                                                            &FIRAnalytics::applicationDidBecomeActive));
    observations_.push_back(notificationCenter_.addObserver(applicationWillResignActiveNotification,
                                                            &FIRAnalytics::applicationWillResignActive));
}

/// Whether this process is to show the window. A folder that cannot be locked keeps nobody from it.
bool Program::isFirst()
{
    auto claimed = SingleInstance::claim(directories_.state);
    if (claimed && !*claimed) {
        if (const auto asked = SingleInstance::activateFirst(directories_.state); !asked)
            status_ = complain(couldNotStart, asked.error().message);
        return false;
    }
    const auto listening = claimed ? (*claimed)->listen([this] { showWindow(); }) : Result<>(claimed.error());
    if (!listening)
        console_.reportLine("A second start will not find this one: " + listening.error().message);
    if (claimed)
        instance_ = std::move(*claimed);
    return true;
}

int Program::run()
{
    if (!isFirst())
        return status_;
    start();
    QCoreApplication::exec();
    end();
    while (!ended_)
        QCoreApplication::exec();
    if (camera_.isChoosing()) // on a thread that may hang for seconds, and uses what would end now
        std::_Exit(status_);
    return status_;
}

void Program::start()
{
    camera_.choose([this](const Result<bool> &isSimulated) { didChooseCamera(isSimulated); });
    registerComponents();
    makeDelegate();
    delegate_->didFinishLaunching();
    scene_ = std::make_unique<SceneDelegate>();
    scene_->willConnectToSession(delegate_->window());
    watchActivity();
    watchStore();
}

void Program::watchActivity()
{
    observations_.push_back(notificationCenter_.addObserver(applicationDidBecomeActiveNotification, [this] {
        desktop_.userNotifications().applicationDidBecomeActive();
    }));
    windowActivity_ = std::make_unique<WindowActivity>(
        delegate_->window()->quickWindow(), activity_,
        WindowActivity::shellFor(std::getenv("XDG_CURRENT_DESKTOP"), std::getenv("PLASMA_PLATFORM")));
    sessionActivity_ = std::make_shared<SessionActivity>(
        activity_, [this](std::shared_ptr<const void> kept) { keepUntilStored(std::move(kept)); });
    sessionActivity_->observe(desktop_.userSession());
}

/// What other processes do to the photos is shown; small copies that some photo has left behind go, later.
void Program::watchStore()
{
    storeWatch_ =
        std::make_shared<StoreWatch>(StoreWatch::Services{*delegate_, notificationCenter_, *storageQueue_});
    auto watching = FileWatch::start(directories_.data, delegate_->persistentContainer().file().filename(),
                                     [watch = storeWatch_] { watch->fileChanged(); });
    if (watching)
        storeFileWatch_ = *std::move(watching);
    else
        console_.reportLine("What others do to the photos is not seen: " + watching.error().message);
    constexpr std::chrono::seconds whenAllIsQuiet{20};
    storageQueue_->asyncAfter(whenAllIsQuiet,
                              [photos = photoDataManager()]() mutable { photos.sweepThumbnails(); });
}

void Program::makeDelegate()
{
    delegate_ = std::make_unique<AppDelegate>(
        AppDelegate::Services{.firApp = firApp_,
                              .notificationCenter = desktop_.userNotifications(),
                              .remoteNotifications = desktop_.remoteNotifications(),
                              .console = console_,
                              .storageQueue = *storageQueue_,
                              .storageFolder = directories_.data,
                              .makeWindow = [this] { return makeWindow(); },
                              .makeFirstScreen = [this] { return makeMainScreen(); }});
    CaptureManager::setSharedServices({.mainQueue = mainQueue_,
                                       .queues = queues_,
                                       .framework = camera_,
                                       .clock = clock_,
                                       .console = console_,
                                       .app = App::shared(),
                                       .photoDataManager = photoDataManager()});
}

std::shared_ptr<Window> Program::makeWindow()
{
    auto window = std::make_shared<Window>(&desktop_.appearance());
    QObject::connect(&window->screens(), &ScreenStack::screenDidAppear, [](const ViewController &screen) {
        FIRAnalytics::viewDidAppear(screen.className(), screen.instanceID());
    });
    return window;
}

PhotoDataManager Program::photoDataManager()
{
    return PhotoDataManager({*delegate_, notificationCenter_, clock_, console_, &thumbnails_, &storageRoom_});
}

Storyboard Program::galleryStoryboard()
{
    return PhotoListViewController::storyboard({.photoDataManager = photoDataManager(),
                                                .notificationCenter = notificationCenter_,
                                                .mainQueue = mainQueue_,
                                                .haptics = desktop_.haptics(),
                                                .detailStoryboard = PhotoDetailViewController::storyboard(
                                                    {.app = App::shared(),
                                                     .photoDataManager = photoDataManager(),
                                                     .logManager = LogManager(clock_, console_),
                                                     .photoLibrary = photoLibrary_,
                                                     .mainQueue = mainQueue_,
                                                     .console = console_,
                                                     .haptics = desktop_.haptics(),
                                                     .urlOpener = desktop_.urlOpener(),
                                                     .storeReview = desktop_.storeReview(),
                                                     .supportAddress = appInfo_.supportAddress})});
}

std::shared_ptr<ViewController> Program::makeMainScreen()
{
    const auto screen =
        MainViewController::storyboard({.app = App::shared(),
                                        .standardUserDefaults = defaults_,
                                        .notificationCenter = notificationCenter_,
                                        .mainQueue = mainQueue_,
                                        .queues = queues_,
                                        .clock = clock_,
                                        .console = console_,
                                        .framework = camera_,
                                        .store = *delegate_,
                                        .thumbnails = &thumbnails_,
                                        .storage = std::make_shared<StorageWatch>(
                                            StorageWatch::Services{.mainQueue = mainQueue_,
                                                                   .queues = queues_,
                                                                   .notificationCenter = notificationCenter_,
                                                                   .freeSpace = freeSpace_,
                                                                   .room = storageRoom_,
                                                                   .folder = directories_.data}),
                                        .cameraAuthorization = camera_,
                                        .photoLibrary = photoLibrary_,
                                        .haptics = desktop_.haptics(),
                                        .urlOpener = desktop_.urlOpener(),
                                        .idleInhibitor = &desktop_.idleInhibitor(),
                                        .remoteConfig = remoteConfig_,
                                        .appInfo = appInfo_,
                                        .settingsStoryboard = SettingsViewController::storyboard(
                                            {App::shared(), mainQueue_, console_, desktop_.urlOpener(),
                                             remoteConfig_, appInfo_.shortVersion, appLanguageName()}),
                                        .galleryStoryboard = galleryStoryboard()})
            .instantiateViewController<MainViewController>("MainViewController");
    mainScreen_ = screen;
    return screen;
}

void Program::didChooseCamera(const Result<bool> &isSimulated)
{
    if (!isSimulated) {
        complain(couldNotStart, isSimulated.error().message);
        if (options_.camera != "auto") // what was asked for is not there
            QCoreApplication::exit(status_ = couldNotStart);
        return;
    }
    if (const auto screen = mainScreen_.lock())
        screen->setCameraKind(*isSimulated ? CameraKind::Simulated : CameraKind::Real);
}

void Program::showWindow()
{
    if (delegate_ && delegate_->window())
        delegate_->window()->makeKeyAndVisible();
}

/// Where the desktop has no page for what an app may do: what to do there.
void Program::showSettingsHelp()
{
    const auto screen = delegate_->window() ? delegate_->window()->screens().topViewController() : nullptr;
    if (!screen)
        return;
    CustomPopupView::make(desktop_.haptics(), {.icon = "gear",
                                               .title = localized("Settings"),
                                               .description = settingsHelp(),
                                               .buttonTitle = localized("OK")})
        ->show(*screen);
}

/// Stills are stored on the global queue; what they report comes to main.
void Program::keepUntilStored(std::shared_ptr<const void> kept)
{
    queues_.makeSerialQueue("storing")->async([this, kept = std::move(kept)] {
        queues_.drainGlobal();
        mainQueue_.async([kept] {});
    });
}

/// From the outside in: the run stops, what has been photographed is stored, the screens go, the engine
/// stores what it has accepted, the queues close. Main serves its loop all the while.
void Program::end()
{
    QGuiApplication::setQuitOnLastWindowClosed(false);
    activity_.arises(AppActivity::Reason::ProgramEnding);
    delegate_->window()->quickWindow().hide();
    finishing_ = queues_.makeSerialQueue("finishing");
    finishing_->async([this] {
        queues_.drainGlobal();
        mainQueue_.async([this] { closeScreens(); }); // after what the stills have reported
    });
}

void Program::closeScreens()
{
    if (const auto saved = delegate_->persistentContainer().viewContext().save(); !saved)
        console_.reportLine("What could not be stored is lost: " + saved.error().message);
    windowActivity_.reset();
    sessionActivity_.reset();
    storeFileWatch_.reset();
    scene_->sceneDidDisconnect();
    delegate_->closeWindow();
    finishing_.reset();
    if (analytics_)
        analytics_->close(mainQueue_, [this] { closeQueues(); });
    else
        closeQueues();
}

void Program::closeQueues()
{
    queues_.closeThen([this] {
        mainQueue_.async([this] {
            ended_ = true;
            QCoreApplication::exit();
        });
    });
}

} // namespace skyflare
