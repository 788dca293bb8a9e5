#pragma once

#include "platform/linux/LogindSession.h"
#include "platform/linux/MessageBus.h"
#include "platform/linux/NotificationStoreReview.h"
#include "platform/linux/PlatformThread.h"
#include "platform/linux/PortalAppearance.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// The app's name among desktop files, icons and software centres.
inline constexpr const char *applicationId = "skyflare";

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
    };

    explicit DesktopServices(const Services &services);

    [[nodiscard]] AppearanceSetting &appearance() { return appearance_; }
    [[nodiscard]] URLOpener &urlOpener() { return *urlOpener_; }
    [[nodiscard]] StoreReview &storeReview() { return *storeReview_; }
    [[nodiscard]] UserSession &userSession() { return *userSession_; }

private:
    PlatformThread thread_;
    MessageBus sessionBus_;
    MessageBus systemBus_;
    PortalAppearance appearance_{sessionBus_};
    const std::shared_ptr<LogindSession> userSession_;
    const std::unique_ptr<URLOpener> urlOpener_;
    const std::shared_ptr<DesktopNotifications> notifications_;
    const std::shared_ptr<NotificationStoreReview> storeReview_;
};

} // namespace skyflare
