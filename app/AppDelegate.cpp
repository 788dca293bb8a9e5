#include "app/AppDelegate.h"

#include "store/PhotoEntity.h"
#include "ui/SharedObject.h"

#include <cstdlib>
#include <utility>

namespace skyflare {

AppDelegate::AppDelegate(Services services) : services_(std::move(services)) {}

AppDelegate::~AppDelegate()
{
    services_.notificationCenter.setDelegate(nullptr);
}

bool AppDelegate::didFinishLaunching()
{
    window_ = services_.makeWindow();
    window_->setRootViewController(makeShared<MainNavigationController>(services_.makeFirstScreen));
    window_->makeKeyAndVisible();

    services_.firApp.configure();

    services_.notificationCenter.setDelegate(this);
    services_.notificationCenter.requestAuthorizationWithOptions(
        UNAuthorizationOptions::Badge | UNAuthorizationOptions::Sound | UNAuthorizationOptions::Alert,
        [&console = services_.console](bool granted, const std::optional<Error> & /*error*/) {
            console.printLine(granted ? "Permission granted: true" : "Permission granted: false");
        });
    registerForRemoteNotifications();
    return true;
}

SceneConfiguration AppDelegate::configurationForConnectingSceneSession(std::string role)
{
    return {.name = "Default Configuration", .sessionRole = std::move(role)};
}

void AppDelegate::registerForRemoteNotifications()
{
    services_.remoteNotifications.registerForRemoteNotifications([this](const Result<Bytes> &deviceToken) {
        if (deviceToken)
            didRegisterForRemoteNotifications(*deviceToken);
        else
            didFailToRegisterForRemoteNotifications(deviceToken.error());
    });
}

void AppDelegate::didRegisterForRemoteNotifications(Bytes deviceToken)
{
    FIRMessaging::messaging().setAPNSToken(std::move(deviceToken));
}

void AppDelegate::didFailToRegisterForRemoteNotifications(const Error &error)
{
    services_.console.printLine("Failed to register: " + error.description());
}

void AppDelegate::willPresentNotification(
    const UserNotification & /*notification*/,
    std::function<void(UNNotificationPresentationOptions)> completionHandler)
{
    completionHandler(UNNotificationPresentationOptions::Banner | UNNotificationPresentationOptions::Sound |
                      UNNotificationPresentationOptions::Badge);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): as the interface has it
void AppDelegate::didReceiveNotificationResponse(const UserNotificationResponse & /*response*/,
                                                 std::function<void()> completionHandler)
{
    completionHandler();
}

PersistentContainer &AppDelegate::persistentContainer()
{
    std::call_once(containerMade_, [this] { makeContainer(); });
    return *container_;
}

void AppDelegate::makeContainer()
{
    container_ = std::make_unique<PersistentContainer>(
        PersistentContainer::Description{
            .name = storageContainerName, .folder = services_.storageFolder, .model = storageModel()},
        PersistentContainer::Services{.console = services_.console,
                                      .backgroundQueue = services_.storageQueue});
    const auto loaded = container_->loadPersistentStores();
    if (loaded)
        return;
    services_.console.reportLine(unresolvedError(loaded.error()));
    std::_Exit(EXIT_FAILURE); // from whatever thread: nothing may be written any more
}

} // namespace skyflare
