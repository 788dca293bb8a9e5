#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/UserNotificationCenter.h"

#include <string>

namespace skyflare {

/// Notifications where the desktop shows none: asked for, they are not granted, and nothing is shown.
///
/// Threads: main. Borrows the main queue.
class MissingUserNotifications final : public UserNotificationCenter {
public:
    /// @param why  there are none: one line for a person
    MissingUserNotifications(SerialQueue &mainQueue, std::string why);

    void setDelegate(UserNotificationCenterDelegate * /*delegate*/) override {}
    void requestAuthorizationWithOptions(UNAuthorizationOptions options,
                                         Authorization completionHandler) override;
    void addNotificationRequest(const UserNotification &notification,
                                std::function<void(const Result<> &)> completionHandler) override;

private:
    SerialQueue &mainQueue_;
    const Error why_;
};

} // namespace skyflare
