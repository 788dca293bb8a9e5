#pragma once

#include "analytics/AnalyticsHost.h"
#include "app/AppDelegate.h"
#include "app/AppOptions.h"
#include "app/LaunchCamera.h"
#include "app/MainQueue.h"
#include "app/SceneDelegate.h"
#include "app/SingleInstance.h"
#include "app/WindowActivity.h"
#include "platform/base/AsioQueues.h"
#include "platform/base/StandardConsole.h"
#include "platform/desktop/MissingHaptics.h"
#include "platform/desktop/MissingRemoteNotifications.h"
#include "platform/desktop/MissingStoreReview.h"
#include "platform/desktop/MissingUserNotifications.h"
#include "platform/linux/DesktopURLOpener.h"
#include "platform/linux/PicturesLibrary.h"
#include "platform/linux/PortalAppearance.h"
#include "platform/linux/ProgramFiles.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/UserDirectories.h"
#include "platform/net/CurlTransport.h"
#include "screens/main/MainViewController.h"

#include <QGuiApplication>
#include <memory>

namespace skyflare {

/// The app: what it is made of, in the order in which the parts need each other. One a process.
///
/// Threads: main. Borrows the options and the arguments.
class Program {
public:
    Program(const AppOptions &options, int &argc, char **argv);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// Shows the window, and ends with it. Gives the process's exit status.
    int run();

private:
    const AppOptions &options_;
    const UserDirectories directories_;
    const ProgramFiles files_ = ProgramFiles::standard();
    SystemClock clock_;
    StandardConsole console_;
    MainQueue mainQueue_;
    TerminationSignals signals_{[this] { mainQueue_.async(&QCoreApplication::quit); }}; // before any thread
    QGuiApplication application_;
    std::unique_ptr<SingleInstance> instance_;
    AsioQueues queues_;
    const std::shared_ptr<SerialQueue> storageQueue_ = queues_.makeSerialQueue("storage");
    NotificationCenter notificationCenter_;
    UserDefaults defaults_{directories_.config / standardUserDefaultsFile, console_};
    SystemRandom random_;
    const AppInfo appInfo_ = AppInfo::load(files_.deployment, console_);
    CurlTransport transport_;
    const std::shared_ptr<FIRRemoteConfig> remoteConfig_;
    FIRApp firApp_{files_.deployment, console_};
    std::unique_ptr<AnalyticsHost> analytics_; ///< null: this run is not measured
    MissingUserNotifications notifications_{mainQueue_, "notifications are not set up"};
    MissingRemoteNotifications remoteNotifications_{mainQueue_, "push messages are not set up"};
    MissingHaptics haptics_;
    MissingStoreReview storeReview_;
    PicturesLibrary photoLibrary_{directories_.pictures, queues_.globalUserInitiated()};
    DesktopURLOpener urlOpener_;
    PortalAppearance appearance_;
    LaunchCamera camera_;
    std::unique_ptr<AppDelegate> delegate_;
    std::weak_ptr<MainViewController> mainScreen_;
    std::unique_ptr<SceneDelegate> scene_;
    std::unique_ptr<WindowActivity> activity_;
    std::shared_ptr<SerialQueue> finishing_;
    int status_ = 0;
    bool ended_ = false;

    LaunchCamera::Services cameraServices();
    void registerComponents();
    bool isFirst();
    void start();
    void makeDelegate();
    [[nodiscard]] PhotoDataManager photoDataManager();
    [[nodiscard]] Storyboard galleryStoryboard();
    std::shared_ptr<ViewController> makeMainScreen();
    void didChooseCamera(const Result<bool> &isSimulated);
    void showSettingsHelp();

    void end();
    void closeScreens();
    void closeQueues();
};

} // namespace skyflare
