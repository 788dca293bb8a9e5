#pragma once

#include "app/App.h"
#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/cloud/FIRApp.h"
#include "platform/cloud/FIRMessaging.h"
#include "platform/desktop/RemoteNotifications.h"
#include "platform/desktop/UserNotificationCenter.h"
#include "platform/persistence/PersistentContainer.h"
#include "store/PersistentContainerProvider.h"
#include "ui/MainNavigationController.h"
#include "ui/Window.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace skyflare {

/// What a scene is to be like that the system connects.
struct SceneConfiguration {
    std::string name;
    std::string sessionRole;
};

/// The app as a whole: brings it up in order, answers for notifications, and owns the photo store's
/// container.
///
/// Threads: main; persistentContainer() on any.
/// Owns its window and the container. Borrows its Services, which must outlive it.
class AppDelegate final : public PersistentContainerProvider, public UserNotificationCenterDelegate {
public:
    struct Services {
        FIRApp &firApp;
        UserNotificationCenter &notificationCenter;
        RemoteNotifications &remoteNotifications;
        Console &console;
        DispatchQueue &storageQueue; ///< for the store's background work
        std::filesystem::path storageFolder;
        std::function<std::shared_ptr<Window>()> makeWindow;
        MainNavigationController::Factory makeFirstScreen;
    };

    /// Makes App::shared(), and so the settings of a first launch, before there is any screen.
    explicit AppDelegate(Services services);
    ~AppDelegate() override;

    // application:didFinishLaunchingWithOptions:
    bool didFinishLaunching();
    // application:configurationForConnectingSceneSession:options:
    [[nodiscard]] static SceneConfiguration configurationForConnectingSceneSession(std::string role);
    // application:didDiscardSceneSessions:
    void didDiscardSceneSessions() {}
    // application:didRegisterForRemoteNotificationsWithDeviceToken:
    void didRegisterForRemoteNotifications(Bytes deviceToken);
    // application:didFailToRegisterForRemoteNotificationsWithError:
    void didFailToRegisterForRemoteNotifications(const Error &error);

    void willPresentNotification(
        const UserNotification &notification,
        std::function<void(UNNotificationPresentationOptions)> completionHandler) override;
    void didReceiveNotificationResponse(const UserNotificationResponse &response,
                                        std::function<void()> completionHandler) override;

    /// Made and loaded on first use. A store that cannot be loaded is left as it is, and ends the program.
    PersistentContainer &persistentContainer() override;

    [[nodiscard]] const std::shared_ptr<Window> &window() const { return window_; }
    /// Lets go of the screens.
    void closeWindow() { window_.reset(); }

private:
    const Services services_;
    std::shared_ptr<Window> window_;
    App &app_ = App::shared();
    std::once_flag containerMade_;
    std::unique_ptr<PersistentContainer> container_;

    void registerForRemoteNotifications();
    void makeContainer();
};

} // namespace skyflare
