#pragma once

#include "app/BackgroundNotifications.h"
#include "app/QuietWhile.h"
#include "platform/linux/BusName.h"
#include "platform/linux/UnifiedPushInbox.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// The app without a window, which the session bus has started because a push message came while the app was
/// not running: it shows the message, and goes when all is quiet, or the app itself has started.
///
/// Threads: main. Borrows its Services, which must outlive it; the bus's queue is main.
class BackgroundPush {
public:
    enum class End {
        Done,
        OpenApp, ///< the user has chosen a notification, or the desktop wants the app
    };
    struct Services {
        MessageBus &sessionBus;
        SerialQueue &mainQueue;
        RandomSource &random;
        Console &console;
        std::filesystem::path stateFolder;
        std::string applicationId;
        std::shared_ptr<NotificationBoard> board;
        BackgroundNotifications::AfterEnd afterEnd;
        /// Called once at least.
        /// @param activationToken  brings the app's window to the front on Wayland; may be empty
        std::function<void(End end, const std::string &activationToken)> ended;
    };

    explicit BackgroundPush(const Services &services);
    BackgroundPush(const BackgroundPush &) = delete;
    BackgroundPush &operator=(const BackgroundPush &) = delete;

private:
    const Services services_;
    const std::shared_ptr<QuietWhile> quiet_;
    BackgroundNotifications notifications_;
    UnifiedPushInbox inbox_;
    const MessageBus::Subscription application_;
    bool isStirred_ = false;        ///< since the while was over
    std::shared_ptr<BusName> name_; ///< last: all that is called is there

    UnifiedPushInbox::Services inboxServices();
    void claimName();
    void takeMessage();
    void leave();
    void didChangeName(const Result<> &owned);
};

} // namespace skyflare
