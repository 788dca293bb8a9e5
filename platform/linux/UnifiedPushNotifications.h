#pragma once

#include "platform/desktop/RemoteNotifications.h"
#include "platform/linux/BusName.h"
#include "platform/linux/UnifiedPushDistributors.h"
#include "platform/linux/UnifiedPushInbox.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// Push messages through UnifiedPush on the session bus.
///
/// It registers with the distributor that it used before, else with the first one by name; again whenever
/// that one starts anew, or one starts while there is none. The device's token is what deviceTokenFor() says.
/// Threads: main. Shared. Borrows its Services, which must outlive it; the bus's queue is main.
class UnifiedPushNotifications final : public RemoteNotifications,
                                       public std::enable_shared_from_this<UnifiedPushNotifications> {
public:
    struct Services {
        UnifiedPushInbox::Services inbox;
        SerialQueue &mainQueue;
        std::string applicationId; ///< the bus name that messages go to
    };

    explicit UnifiedPushNotifications(Services services);

    void registerForRemoteNotifications(
        std::function<void(const Result<Bytes> &deviceToken)> didRegister) override;

private:
    const Services services_;
    std::function<void(const Result<Bytes> &)> didRegister_;
    std::optional<UnifiedPushInbox> inbox_;
    std::shared_ptr<UnifiedPushDistributors> distributors_;
    MessageBus::Subscription appearances_;
    std::shared_ptr<BusName> name_;
    bool hasName_ = false;       ///< what distributors send comes to us
    bool isAsking_ = false;      ///< a distributor has still to answer
    bool isRegistered_ = false;  ///< and it said yes
    std::optional<Bytes> token_; ///< handed out, and not revoked
    std::string lastFailure_;    ///< said, and not to be said again
    unsigned attempt_ = 0;

    void begin();
    void didChangeName(const Result<> &owned);
    void lookForDistributors();
    void didFind(const Result<std::vector<std::string>> &names);
    void registerWith(const std::string &name);
    void didRegister(const std::string &name, const Result<> &outcome);
    void distributorAppeared(const std::string &name);
    void takeSubscription(const Bytes &deviceToken);
    void fail(const Error &why);
};

} // namespace skyflare
