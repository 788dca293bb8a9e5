#include "platform/linux/NotificationBoards.h"

#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/PortalNotifications.h"
#include "platform/linux/Sandbox.h"

namespace skyflare {

std::shared_ptr<NotificationBoard> makeNotificationBoard(MessageBus &sessionBus,
                                                         const std::string &applicationId)
{
    if (isSandboxed())
        return std::make_shared<PortalNotifications>(sessionBus);
    return std::make_shared<DesktopNotifications>(sessionBus, applicationId);
}

} // namespace skyflare
