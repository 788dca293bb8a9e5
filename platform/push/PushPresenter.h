#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/Console.h"
#include "platform/desktop/UserNotificationCenter.h"
#include "platform/push/WebPushKeys.h"

#include <functional>
#include <span>
#include <string>

namespace skyflare {

/// Shows the push messages that somebody has encrypted for this device, and none other: what is not
/// encrypted may be anybody's who has seen the address.
///
/// Threads: main. Borrows its Services, which must outlive it.
class PushPresenter {
public:
    struct Services {
        UserNotificationCenter &notificationCenter;
        Console &console; ///< hears of the first message that is refused
    };

    PushPresenter(const Services &services, const WebPushKeys &keys) : services_(services), keys_(keys) {}

    /// @param message     as it was sent
    /// @param identifier  the push service's own; of a message that has none it is the identifier, so that
    ///                    one that comes twice is shown once
    void present(std::span<const std::uint8_t> message, const std::string &identifier);

private:
    const Services services_;
    const WebPushKeys keys_;
    bool isReported_ = false;

    void refuse(const Error &why);
};

} // namespace skyflare
