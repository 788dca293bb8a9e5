#pragma once

#include "platform/base/Result.h"

#include <functional>
#include <optional>
#include <string>

namespace skyflare {

/// What a notification may do; the sum of the options that are wanted.
enum class UNAuthorizationOptions : unsigned { None = 0, Badge = 1, Sound = 2, Alert = 4 };

/// How one is shown while the app is in front; the sum of the options that are wanted.
enum class UNNotificationPresentationOptions : unsigned {
    None = 0,
    Badge = 1,
    Sound = 2,
    List = 8,
    Banner = 16
};

constexpr UNAuthorizationOptions operator|(UNAuthorizationOptions one, UNAuthorizationOptions other)
{
    return static_cast<UNAuthorizationOptions>(static_cast<unsigned>(one) | static_cast<unsigned>(other));
}

constexpr UNNotificationPresentationOptions operator|(UNNotificationPresentationOptions one,
                                                      UNNotificationPresentationOptions other)
{
    return static_cast<UNNotificationPresentationOptions>(static_cast<unsigned>(one) |
                                                          static_cast<unsigned>(other));
}

/// Whether `option` is one of the options.
template <typename Options> constexpr bool contains(Options options, Options option)
{
    return (static_cast<unsigned>(options) & static_cast<unsigned>(option)) != 0;
}

struct UserNotification {
    std::string identifier;
    std::string title;
    std::string body;
};

struct UserNotificationResponse {
    UserNotification notification;
    std::string actionIdentifier; ///< what the user has chosen; empty: the notification itself
};

/// Who is asked about notifications, on the main queue. It calls each completion handler once.
class UserNotificationCenterDelegate {
public:
    UserNotificationCenterDelegate() = default;
    UserNotificationCenterDelegate(const UserNotificationCenterDelegate &) = delete;
    UserNotificationCenterDelegate &operator=(const UserNotificationCenterDelegate &) = delete;
    virtual ~UserNotificationCenterDelegate() = default;

    // userNotificationCenter:willPresentNotification:withCompletionHandler:
    /// One arrives while the app is in front: how is it to be shown?
    virtual void
    willPresentNotification(const UserNotification &notification,
                            std::function<void(UNNotificationPresentationOptions)> completionHandler) = 0;

    // userNotificationCenter:didReceiveNotificationResponse:withCompletionHandler:
    /// The user has answered one.
    virtual void didReceiveNotificationResponse(const UserNotificationResponse &response,
                                                std::function<void()> completionHandler) = 0;
};

/// The desktop's notifications.
///
/// Threads: main; answers come on any thread, after the call has returned.
class UserNotificationCenter {
public:
    /// Whether notifications may be shown; where not, why, as far as that is known.
    using Authorization = std::function<void(bool granted, const std::optional<Error> &error)>;

    UserNotificationCenter() = default;
    UserNotificationCenter(const UserNotificationCenter &) = delete;
    UserNotificationCenter &operator=(const UserNotificationCenter &) = delete;
    virtual ~UserNotificationCenter() = default;

    /// Borrows the delegate, until it is replaced or set to null.
    virtual void setDelegate(UserNotificationCenterDelegate *delegate) = 0;

    // requestAuthorizationWithOptions:completionHandler:
    virtual void requestAuthorizationWithOptions(UNAuthorizationOptions options,
                                                 Authorization completionHandler) = 0;

    // addNotificationRequest:withCompletionHandler:
    /// Shows a notification of the app's own, in place of one of the same identifier.
    virtual void addNotificationRequest(const UserNotification &notification,
                                        std::function<void(const Result<> &)> completionHandler) = 0;
};

} // namespace skyflare
