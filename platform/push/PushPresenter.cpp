#include "platform/push/PushPresenter.h"

#include "platform/push/PushMessage.h"
#include "platform/push/WebPushDecryption.h"

#include <utility>

namespace skyflare {

void PushPresenter::present(std::span<const std::uint8_t> message, const std::string &identifier)
{
    const auto text = decryptWebPush(keys_, message);
    if (!text) {
        refuse(text.error());
        return;
    }
    auto notification = readPushMessage(*text);
    if (!notification) {
        refuse(notification.error());
        return;
    }
    if (notification->identifier.empty())
        notification->identifier = identifier;
    // Where the desktop shows none, it has said so when it was asked whether it may.
    services_.notificationCenter.addNotificationRequest(*notification, [](const Result<> & /*shown*/) {});
}

void PushPresenter::refuse(const Error &why)
{
    if (!std::exchange(isReported_, true))
        services_.console.reportLine("A push message is not shown: " + why.message);
}

} // namespace skyflare
