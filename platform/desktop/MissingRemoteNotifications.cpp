#include "platform/desktop/MissingRemoteNotifications.h"

#include <utility>

namespace skyflare {

MissingRemoteNotifications::MissingRemoteNotifications(SerialQueue &mainQueue, std::string why)
    : mainQueue_(mainQueue), why_{"push", 0, std::move(why)}
{
}

void MissingRemoteNotifications::registerForRemoteNotifications(
    std::function<void(const Result<Bytes> &deviceToken)> didRegister)
{
    mainQueue_.async([why = why_, didRegister = std::move(didRegister)] { didRegister(why); });
}

} // namespace skyflare
