#include "platform/desktop/MissingUserNotifications.h"

#include <utility>

namespace skyflare {

MissingUserNotifications::MissingUserNotifications(SerialQueue &mainQueue, std::string why)
    : mainQueue_(mainQueue), why_{"notifications", 0, std::move(why)}
{
}

void MissingUserNotifications::requestAuthorizationWithOptions(UNAuthorizationOptions /*options*/,
                                                               Authorization completionHandler)
{
    mainQueue_.async(
        [why = why_, completionHandler = std::move(completionHandler)] { completionHandler(false, why); });
}

void MissingUserNotifications::addNotificationRequest(const UserNotification & /*notification*/,
                                                      std::function<void(const Result<> &)> completionHandler)
{
    mainQueue_.async(
        [why = why_, completionHandler = std::move(completionHandler)] { completionHandler(why); });
}

} // namespace skyflare
