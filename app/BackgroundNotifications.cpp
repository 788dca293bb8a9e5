#include "app/BackgroundNotifications.h"

namespace skyflare {

void BackgroundNotifications::requestAuthorizationWithOptions(UNAuthorizationOptions /*options*/,
                                                              Authorization completionHandler)
{
    completionHandler(true, {}); // the app has asked, and the desktop decides anyway
}

void BackgroundNotifications::addNotificationRequest(const UserNotification &notification,
                                                     std::function<void(const Result<> &)> completionHandler)
{
    // Let go of with the function that has it: when the notification can no longer be chosen.
    const auto hold = afterEnd_ == AfterEnd::Forgotten ? quiet_->hold() : nullptr;
    board_->show({.summary = notification.title,
                  .body = notification.body,
                  .actions = {{"default", "Skyflare"}},
                  .choice = NotificationBoard::Choice::Welcome,
                  .identifier = notification.identifier,
                  .sound = NotificationBoard::Sound::NewMessage},
                 std::move(completionHandler),
                 [hold, chosen = chosen_](const NotificationBoard::Answer & /*answer*/) { chosen(); });
}

} // namespace skyflare
