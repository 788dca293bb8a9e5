#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/AppBadge.h"
#include "platform/desktop/NotificationBoard.h"
#include "platform/desktop/UserNotificationCenter.h"

#include <memory>
#include <vector>

namespace skyflare {

/// The app's notifications, on the desktop's board.
///
/// A desktop has no permission to ask for: it is granted where there is a board. One that cannot be reached
/// when the app asks is tried again with each notification. While the app is in front its delegate decides
/// how one is shown; in all other cases all is done that the app has asked for. The number on the icon counts
/// what has come since the app became active, less what the user has chosen. A notification that is chosen
/// brings the app to the front.
///
/// Threads: main. Shared. Borrows its Services, which must outlive it, and the delegate.
class AppNotificationCenter final : public UserNotificationCenter,
                                    public std::enable_shared_from_this<AppNotificationCenter> {
public:
    struct Services {
        std::shared_ptr<NotificationBoard> board;
        AppBadge &badge;
        SerialQueue &mainQueue;
        std::function<bool()> isInFront;
        /// @param activationToken  may be empty
        std::function<void(const std::string &activationToken)> bringToFront;
    };

    explicit AppNotificationCenter(Services services) : services_(std::move(services)) {}

    void setDelegate(UserNotificationCenterDelegate *delegate) override { delegate_ = delegate; }
    void requestAuthorizationWithOptions(UNAuthorizationOptions options,
                                         Authorization completionHandler) override;
    void addNotificationRequest(const UserNotification &notification,
                                std::function<void(const Result<> &)> completionHandler) override;

    void applicationDidBecomeActive();

private:
    const Services services_;
    UserNotificationCenterDelegate *delegate_ = nullptr;
    UNAuthorizationOptions authorized_ = UNAuthorizationOptions::None;
    std::vector<std::string> unseen_; ///< their identifiers

    void present(const UserNotification &notification, UNNotificationPresentationOptions options,
                 const NotificationBoard::Shown &shown);
    void count(const std::string &identifier);
    void didChoose(const UserNotification &notification, const NotificationBoard::Answer &answer);
};

} // namespace skyflare
