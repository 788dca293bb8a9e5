#include "app/DesktopServices.h"

#include "platform/linux/DesktopURLOpener.h"
#include "platform/linux/PortalURLOpener.h"

#include <system_error>

namespace skyflare {

namespace {

/// A sandbox that shows us none of the user's programs.
bool isSandboxed()
{
    std::error_code failed;
    return std::filesystem::exists("/.flatpak-info", failed);
}

std::unique_ptr<URLOpener> makeURLOpener(const DesktopServices::Services &services, MessageBus &sessionBus)
{
    if (isSandboxed())
        return std::make_unique<PortalURLOpener>(
            PortalURLOpener::Services{.sessionBus = sessionBus,
                                      .console = services.console,
                                      .ownSettingsPage = services.ownSettingsPage});
    return std::make_unique<DesktopURLOpener>(
        DesktopURLOpener::Services{.queue = services.queue,
                                   .mainQueue = services.mainQueue,
                                   .console = services.console,
                                   .ownSettingsPage = services.ownSettingsPage});
}

std::string storePageOf(const DesktopServices::Services &services)
{
    return services.storePage.empty() ? std::string("appstream:") + applicationId : services.storePage;
}

} // namespace

DesktopServices::DesktopServices(const Services &services)
    : sessionBus_(MessageBus::Kind::Session, {thread_, services.mainQueue, services.console}),
      systemBus_(MessageBus::Kind::System, {thread_, services.mainQueue, services.console}),
      userSession_(std::make_shared<LogindSession>(systemBus_, services.console)),
      urlOpener_(makeURLOpener(services, sessionBus_)),
      notifications_(std::make_shared<DesktopNotifications>(sessionBus_, applicationId)),
      storeReview_(std::make_shared<NotificationStoreReview>(
          NotificationStoreReview::Services{.notifications = notifications_,
                                            .urlOpener = *urlOpener_,
                                            .console = services.console,
                                            .record = services.stateFolder / "review.plist",
                                            .appVersion = services.appVersion,
                                            .storePage = storePageOf(services)}))
{
}

} // namespace skyflare
