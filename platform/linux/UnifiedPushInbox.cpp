#include "platform/linux/UnifiedPushInbox.h"

#include "platform/push/PushSubscription.h"
#include "platform/push/WebPushKeyFile.h"

#include <utility>

namespace skyflare {

UnifiedPushInbox::UnifiedPushInbox(Services services, Events events)
    : services_(std::move(services)),
      events_(std::move(events)),
      record_(services_.stateFolder / "push.plist", services_.console),
      connector_(UnifiedPushConnector::offer(services_.sessionBus, connectorEvents()))
{
    if (!record_.token())
        return;
    if (const auto opened = token(); !opened)
        services_.console.reportLine("Push messages cannot be read: " + opened.error().message);
}

/// They come from the connector alone, which goes with this.
UnifiedPushConnector::Events UnifiedPushInbox::connectorEvents()
{
    return {.message =
                [this](const Bytes &message, const std::string &identifier) {
                    if (presenter_)
                        presenter_->present(message, identifier);
                    if (events_.message)
                        events_.message();
                },
            .newEndpoint =
                [this](const std::string &endpoint) {
                    if (keys_ && events_.newSubscription)
                        events_.newSubscription(deviceTokenFor(endpoint, *keys_));
                },
            .unregistered =
                [this] {
                    if (events_.unregistered)
                        events_.unregistered();
                }};
}

Result<> UnifiedPushInbox::openKeys()
{
    if (keys_)
        return {};
    const auto opened =
        WebPushKeyFile::open(services_.stateFolder / "push.keys", services_.random, services_.console);
    if (!opened)
        return opened.error();
    keys_ = *opened;
    presenter_.emplace(PushPresenter::Services{services_.notificationCenter, services_.console}, *keys_);
    return {};
}

Result<std::string> UnifiedPushInbox::token()
{
    if (const auto opened = openKeys(); !opened)
        return opened.error();
    auto token = record_.makeToken(services_.random);
    if (token)
        connector_->setToken(*token);
    return token;
}

} // namespace skyflare
