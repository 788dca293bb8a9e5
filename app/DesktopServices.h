#pragma once

#include "platform/desktop/AppNotificationCenter.h"
#include "platform/linux/DesktopIdleInhibitor.h"
#include "platform/linux/FeedbackdHaptics.h"
#include "platform/linux/LauncherBadge.h"
#include "platform/linux/LogindSession.h"
#include "platform/linux/MessageBus.h"
#include "platform/linux/NotificationStoreReview.h"
#include "platform/linux/PlatformThread.h"
#include "platform/linux/PortalAppearance.h"
#include "platform/linux/PortalCamera.h"
#include "platform/linux/UnifiedPushNotifications.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// What the desktop does for the app over D-Bus, on one platform thread. Each service may be missing: then
/// what it would do does not happen.
///
/// Threads: main. Borrows its Services, which must outlive it.
class DesktopServices {
public:
    struct Services {
        DispatchQueue &queue; ///< starts programs
        SerialQueue &mainQueue;
        Console &console;
        std::filesystem::path stateFolder;
        std::string appVersion;
        std::string storePage;                 ///< empty: what the desktop's software centre knows of the app
        std::function<void()> ownSettingsPage; ///< for where the desktop has none
        std::function<bool()> isInFront;       ///< whether the app is before the user
        RandomSource &random;
        /// The desktop wants to see the app.
        /// @param activationToken  brings its window to the front on Wayland; may be empty
        std::function<void(const std::string &activationToken)> showApp;
    };

    explicit DesktopServices(const Services &services);

    [[nodiscard]] AppearanceSetting &appearance() { return appearance_; }
    [[nodiscard]] URLOpener &urlOpener() { return *urlOpener_; }
    [[nodiscard]] StoreReview &storeReview() { return *storeReview_; }
    [[nodiscard]] AppNotificationCenter &userNotifications() { return *userNotifications_; }
    [[nodiscard]] HapticFeedback &haptics() { return *haptics_; }
    [[nodiscard]] IdleInhibitor &idleInhibitor() { return *idleInhibitor_; }
    [[nodiscard]] UserSession &userSession() { return *userSession_; }
    /// Null outside of a sandbox, where cameras are used directly.
    [[nodiscard]] const std::shared_ptr<PortalCamera> &portalCamera() const { return portalCamera_; }
    [[nodiscard]] RemoteNotifications &remoteNotifications() { return *remoteNotifications_; }

private:
    PlatformThread thread_;
    MessageBus sessionBus_;
    MessageBus systemBus_;
    PortalAppearance appearance_{sessionBus_};
    const std::shared_ptr<LogindSession> userSession_;
    const std::unique_ptr<URLOpener> urlOpener_;
    const std::shared_ptr<NotificationBoard> notifications_;
    const std::shared_ptr<NotificationStoreReview> storeReview_;
    LauncherBadge badge_;
    const std::shared_ptr<AppNotificationCenter> userNotifications_;
    const std::shared_ptr<FeedbackdHaptics> haptics_;
    const std::shared_ptr<DesktopIdleInhibitor> idleInhibitor_;
    const std::shared_ptr<PortalCamera> portalCamera_;
    const MessageBus::Subscription applicationObject_;
    const std::shared_ptr<UnifiedPushNotifications> remoteNotifications_;
};

} // namespace skyflare
