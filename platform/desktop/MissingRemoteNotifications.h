#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/RemoteNotifications.h"

#include <string>

namespace skyflare {

/// Push messages where there is no push service: registering fails, and says why.
///
/// Threads: main. Borrows the main queue.
class MissingRemoteNotifications final : public RemoteNotifications {
public:
    /// @param why  there is none: one line for a person
    MissingRemoteNotifications(SerialQueue &mainQueue, std::string why);

    void registerForRemoteNotifications(
        std::function<void(const Result<Bytes> &deviceToken)> didRegister) override;

private:
    SerialQueue &mainQueue_;
    const Error why_;
};

} // namespace skyflare
