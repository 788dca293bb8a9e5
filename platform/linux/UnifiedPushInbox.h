#pragma once

#include "platform/linux/UnifiedPushConnector.h"
#include "platform/linux/UnifiedPushRecord.h"
#include "platform/push/PushPresenter.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace skyflare {

/// Takes what a distributor brings: shows messages, and makes of an address what a sender needs.
///
/// Token and keys are kept in the state folder (push.plist, push.keys), and made when they are first needed.
/// Threads: main. Borrows its Services, which must outlive it; the bus's queue is main.
class UnifiedPushInbox {
public:
    struct Services {
        MessageBus &sessionBus;
        RandomSource &random;
        UserNotificationCenter &notificationCenter;
        Console &console;
        std::filesystem::path stateFolder;
    };
    /// Each may be empty.
    struct Events {
        std::function<void()> message{}; ///< one came, and has been shown if it can be read
        std::function<void(const Bytes &deviceToken)> newSubscription{};
        std::function<void()> unregistered{};
    };

    /// Calls are taken from now on, for a name that is claimed later.
    UnifiedPushInbox(Services services, Events events);

    /// What a distributor is to know us by. An error where token or keys can be neither read nor made.
    Result<std::string> token();
    [[nodiscard]] UnifiedPushRecord &record() { return record_; }

private:
    const Services services_;
    const Events events_;
    UnifiedPushRecord record_;
    std::optional<WebPushKeys> keys_;
    std::optional<PushPresenter> presenter_;
    std::shared_ptr<UnifiedPushConnector> connector_;

    UnifiedPushConnector::Events connectorEvents();
    Result<> openKeys();
};

} // namespace skyflare
