#include "app/BackgroundPush.h"

#include "platform/linux/ApplicationObject.h"

namespace skyflare {

namespace {

constexpr std::chrono::seconds quietLength{10};

} // namespace

BackgroundPush::BackgroundPush(const Services &services)
    : services_(services),
      quiet_(std::make_shared<QuietWhile>(services_.mainQueue, quietLength, [this] { leave(); })),
      notifications_(services_.board, services_.afterEnd, quiet_,
                     [this] { services_.ended(End::OpenApp, {}); }),
      inbox_(inboxServices(), {.message = [this] { takeMessage(); }}),
      application_(
          offerApplicationObject(services_.sessionBus, services_.applicationId,
                                 [this](const std::string &token) { services_.ended(End::OpenApp, token); }))
{
    claimName();
}

void BackgroundPush::claimName()
{
    isStirred_ = false;
    name_ = BusName::claim(services_.sessionBus, services_.applicationId, BusName::Claim::Yielding,
                           [this](const Result<> &owned) { didChangeName(owned); });
    quiet_->begin();
}

void BackgroundPush::takeMessage()
{
    isStirred_ = true;
    quiet_->begin();
}

/// First the name: from then on the bus starts another process for what comes. What has come until then is
/// still ours.
void BackgroundPush::leave()
{
    isStirred_ = false;
    name_->release([this, alive = std::weak_ptr(quiet_)] {
        if (!alive.lock())
            return;
        if (isStirred_)
            claimName();
        else
            services_.ended(End::Done, {});
    });
}

UnifiedPushInbox::Services BackgroundPush::inboxServices()
{
    return {.sessionBus = services_.sessionBus,
            .random = services_.random,
            .notificationCenter = notifications_,
            .console = services_.console,
            .stateFolder = services_.stateFolder};
}

/// Where the app runs messages are its own.
void BackgroundPush::didChangeName(const Result<> &owned)
{
    if (!owned)
        services_.ended(End::Done, {});
}

} // namespace skyflare
