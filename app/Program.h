#pragma once

#include "app/AppActivity.h"
#include "app/AppDelegate.h"
#include "app/AppOptions.h"
#include "app/CameraFinder.h"
#include "app/DesktopServices.h"
#include "app/LaunchCamera.h"
#include "app/MainQueue.h"
#include "app/SceneDelegate.h"
#include "app/SessionActivity.h"
#include "app/SingleInstance.h"
#include "app/WindowActivity.h"
#include "platform/base/AsioQueues.h"
#include "platform/base/StandardConsole.h"
#include "platform/linux/BackgroundThread.h"
#include "platform/linux/FileSystemSpace.h"
#include "platform/linux/FileWatch.h"
#include "platform/linux/PicturesLibrary.h"
#include "platform/linux/ProgramFiles.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/UserDirectories.h"
#include "platform/net/CurlTransport.h"
#include "programs/ProgramAnalytics.h"
#include "screens/main/MainViewController.h"
#include "store/StoreWatch.h"
#include "store/ThumbnailCache.h"

#include <QGuiApplication>
#include <memory>
#include <vector>

namespace skyflare {

/// The app: what it is made of, in the order in which the parts need each other. One a process.
///
/// Threads: main. Borrows the options and the arguments.
class Program {
public:
    Program(const AppOptions &options, int &argc, char **argv, CameraFinder cameraFinder = &findCamera,
            ProgramFiles files = ProgramFiles::standard());
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// Shows the window, and ends with it. Gives the process's exit status.
    int run();

private:
    const AppOptions &options_;
    const UserDirectories directories_;
    const ProgramFiles files_;
    SystemClock clock_;
    StandardConsole console_;
    MainQueue mainQueue_;
    TerminationSignals signals_{[this] { mainQueue_.async(&QCoreApplication::quit); }}; // before any thread
    QGuiApplication application_;
    std::unique_ptr<SingleInstance> instance_;
    AsioQueues queues_{&becomeWorkingThread}; // photos are encoded there: the live picture goes on
    const std::shared_ptr<SerialQueue> storageQueue_ = queues_.makeSerialQueue("storage");
    const FileSystemSpace freeSpace_;
    StorageRoom storageRoom_;
    ThumbnailCache thumbnails_{directories_.cache / "thumbnails", *storageQueue_};
    NotificationCenter notificationCenter_;
    UserDefaults defaults_{directories_.config / standardUserDefaultsFile, console_};
    const Deployment deployment_ = Deployment::read(files_.deployment, console_);
    const AppInfo appInfo_ = AppInfo::of(deployment_);
    CurlTransport transport_;
    const std::shared_ptr<FIRRemoteConfig> remoteConfig_;
    FIRApp firApp_{FIROptions::of(deployment_)};
    std::unique_ptr<ProgramAnalytics> analytics_; ///< null: this run is not measured
    std::vector<NotificationCenter::Observation> observations_;
    SystemRandom random_;
    PicturesLibrary photoLibrary_{directories_.pictures, queues_.globalUserInitiated()};
    DesktopServices desktop_;
    LaunchCamera camera_;
    std::unique_ptr<AppDelegate> delegate_;
    std::weak_ptr<MainViewController> mainScreen_;
    std::unique_ptr<SceneDelegate> scene_;
    AppActivity activity_{notificationCenter_};
    std::unique_ptr<WindowActivity> windowActivity_;
    std::shared_ptr<SessionActivity> sessionActivity_;
    std::shared_ptr<StoreWatch> storeWatch_;
    std::unique_ptr<FileWatch> storeFileWatch_;
    std::shared_ptr<SerialQueue> finishing_;
    int status_ = 0;
    bool ended_ = false;

    LaunchCamera::Services cameraServices(CameraFinder cameraFinder);
    void registerComponents();
    bool isFirst();
    void start();
    void makeDelegate();
    std::shared_ptr<Window> makeWindow();
    void tellEngine();
    void watchActivity();
    void watchStore();
    [[nodiscard]] PhotoDataManager photoDataManager();
    [[nodiscard]] Storyboard galleryStoryboard();
    std::shared_ptr<ViewController> makeMainScreen();
    void didChooseCamera(const Result<bool> &isSimulated);
    void showSettingsHelp();
    void showWindow();
    void keepUntilStored(std::shared_ptr<const void> kept);

    void end();
    void closeScreens();
    void closeQueues();
};

} // namespace skyflare
