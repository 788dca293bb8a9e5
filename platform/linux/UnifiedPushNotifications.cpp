#include "platform/linux/UnifiedPushNotifications.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

constexpr std::chrono::seconds patience{30}; // with a distributor that has said yes, but gives no address
constexpr const char *description = "Skyflare";

} // namespace

UnifiedPushNotifications::UnifiedPushNotifications(Services services) : services_(std::move(services)) {}

void UnifiedPushNotifications::registerForRemoteNotifications(
    std::function<void(const Result<Bytes> &deviceToken)> didRegister)
{
    didRegister_ = std::move(didRegister);
    if (hasName_)
        lookForDistributors();
    else
        begin();
}

void UnifiedPushNotifications::begin()
{
    const auto weak = weak_from_this();
    MessageBus &bus = services_.inbox.sessionBus;
    name_.reset(); // of an attempt before
    inbox_.emplace(services_.inbox,
                   UnifiedPushInbox::Events{
                       .newSubscription = [this](const Bytes &deviceToken) { takeSubscription(deviceToken); },
                       .unregistered =
                           [this] {
                               isRegistered_ = false;
                               fail({"push", 0, "the distributor has ended the registration"});
                           }});
    distributors_ = std::make_shared<UnifiedPushDistributors>(bus);
    appearances_ = distributors_->watch([weak](const std::string &name) {
        if (const auto self = weak.lock())
            self->distributorAppeared(name);
    });
    name_ = BusName::claim(bus, services_.applicationId, BusName::Claim::Firm, [weak](const Result<> &owned) {
        if (const auto self = weak.lock())
            self->didChangeName(owned);
    });
}

void UnifiedPushNotifications::didChangeName(const Result<> &owned)
{
    hasName_ = owned.has_value();
    if (owned)
        lookForDistributors();
    else
        fail(owned.error());
}

void UnifiedPushNotifications::lookForDistributors()
{
    if (!hasName_ || std::exchange(isAsking_, true))
        return;
    isRegistered_ = false;
    ++attempt_;
    distributors_->find([weak = weak_from_this()](const Result<std::vector<std::string>> &names) {
        if (const auto self = weak.lock())
            self->didFind(names);
    });
}

void UnifiedPushNotifications::didFind(const Result<std::vector<std::string>> &names)
{
    if (!names) {
        fail(names.error());
        return;
    }
    if (names->empty()) {
        fail({"push", 0, "no program on this system brings push messages (a UnifiedPush distributor)"});
        return;
    }
    const std::string usual = inbox_->record().distributor();
    const bool isUsualThere = std::ranges::find(*names, usual) != names->end();
    registerWith(isUsualThere ? usual : names->front());
}

void UnifiedPushNotifications::registerWith(const std::string &name)
{
    const auto token = inbox_->token();
    if (!token) {
        fail(token.error());
        return;
    }
    distributors_->registerWith(name, {services_.applicationId, *token, description},
                                [weak = weak_from_this(), name](const Result<> &outcome) {
                                    if (const auto self = weak.lock())
                                        self->didRegister(name, outcome);
                                });
}

void UnifiedPushNotifications::didRegister(const std::string &name, const Result<> &outcome)
{
    if (!outcome) {
        fail(outcome.error());
        return;
    }
    isAsking_ = false;
    isRegistered_ = true;
    inbox_->record().setDistributor(name);
    services_.mainQueue.asyncAfter(patience, [weak = weak_from_this(), name, attempt = attempt_] {
        const auto self = weak.lock();
        if (self && self->attempt_ == attempt && self->isRegistered_ && !self->token_)
            self->fail({"push", 0, name + " gives no address to send to"});
    });
}

void UnifiedPushNotifications::distributorAppeared(const std::string &name)
{
    if (!isRegistered_ || name == inbox_->record().distributor())
        lookForDistributors();
}

/// It may come before the distributor's answer to the registration.
void UnifiedPushNotifications::takeSubscription(const Bytes &deviceToken)
{
    lastFailure_.clear();
    if (token_ == deviceToken)
        return;
    token_ = deviceToken;
    didRegister_(deviceToken);
}

void UnifiedPushNotifications::fail(const Error &why)
{
    isAsking_ = false;
    token_.reset();
    if (std::exchange(lastFailure_, why.message) != why.message)
        didRegister_(why);
}

} // namespace skyflare
