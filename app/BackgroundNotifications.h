#pragma once

#include "app/QuietWhile.h"
#include "platform/desktop/NotificationBoard.h"
#include "platform/desktop/UserNotificationCenter.h"

#include <functional>
#include <memory>
#include <utility>

namespace skyflare {

/// The notifications of a program without a window. Where the desktop forgets them with the program, the
/// quiet while is held up as long as one is open: it would be taken down, and a choice would go to nobody.
///
/// There is nothing in front, and so no delegate is asked. Threads: main.
class BackgroundNotifications final : public UserNotificationCenter {
public:
    /// Whether the desktop keeps what a program has shown, and starts it for a choice, when that has ended.
    enum class AfterEnd { Forgotten, Kept };

    /// @param chosen  one of them was
    BackgroundNotifications(std::shared_ptr<NotificationBoard> board, AfterEnd afterEnd,
                            std::shared_ptr<QuietWhile> quiet, std::function<void()> chosen)
        : board_(std::move(board)), afterEnd_(afterEnd), quiet_(std::move(quiet)), chosen_(std::move(chosen))
    {
    }

    void setDelegate(UserNotificationCenterDelegate * /*delegate*/) override {}
    void requestAuthorizationWithOptions(UNAuthorizationOptions options,
                                         Authorization completionHandler) override;
    void addNotificationRequest(const UserNotification &notification,
                                std::function<void(const Result<> &)> completionHandler) override;

private:
    const std::shared_ptr<NotificationBoard> board_;
    const AfterEnd afterEnd_;
    const std::shared_ptr<QuietWhile> quiet_;
    const std::function<void()> chosen_;
};

} // namespace skyflare
