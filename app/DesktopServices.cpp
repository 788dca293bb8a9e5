#include "app/DesktopServices.h"

#include "app/ApplicationId.h"
#include "platform/linux/ApplicationObject.h"
#include "platform/linux/DesktopURLOpener.h"
#include "platform/linux/NotificationBoards.h"
#include "platform/linux/PortalRegistration.h"
#include "platform/linux/PortalURLOpener.h"
#include "platform/linux/Sandbox.h"

namespace skyflare {

namespace {

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
    : sessionBus_(MessageBus::Kind::Session,
                  {thread_, services.mainQueue, services.console, portalRegistration(applicationId)}),
      systemBus_(MessageBus::Kind::System, {thread_, services.mainQueue, services.console}),
      userSession_(std::make_shared<LogindSession>(systemBus_, services.console)),
      urlOpener_(makeURLOpener(services, sessionBus_)),
      notifications_(makeNotificationBoard(sessionBus_, applicationId)),
      storeReview_(std::make_shared<NotificationStoreReview>(
          NotificationStoreReview::Services{.notifications = notifications_,
                                            .urlOpener = *urlOpener_,
                                            .console = services.console,
                                            .record = services.stateFolder / "review.plist",
                                            .appVersion = services.appVersion,
                                            .storePage = storePageOf(services)})),
      badge_(sessionBus_, applicationId),
      userNotifications_(std::make_shared<AppNotificationCenter>(
          AppNotificationCenter::Services{.board = notifications_,
                                          .badge = badge_,
                                          .mainQueue = services.mainQueue,
                                          .isInFront = services.isInFront,
                                          .bringToFront = services.showApp})),
      haptics_(std::make_shared<FeedbackdHaptics>(sessionBus_, applicationId)),
      idleInhibitor_(std::make_shared<DesktopIdleInhibitor>(sessionBus_, services.mainQueue, services.console,
                                                            applicationId)),
      portalCamera_(isSandboxed() ? std::make_shared<PortalCamera>(sessionBus_, services.console) : nullptr),
      applicationObject_(offerApplicationObject(sessionBus_, applicationId, services.showApp)),
      remoteNotifications_(std::make_shared<UnifiedPushNotifications>(
          UnifiedPushNotifications::Services{.inbox = {.sessionBus = sessionBus_,
                                                       .random = services.random,
                                                       .notificationCenter = *userNotifications_,
                                                       .console = services.console,
                                                       .stateFolder = services.stateFolder},
                                             .mainQueue = services.mainQueue,
                                             .applicationId = applicationId}))
{
}

} // namespace skyflare
