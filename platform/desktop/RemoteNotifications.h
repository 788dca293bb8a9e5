#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/Result.h"

#include <functional>

namespace skyflare {

/// Messages that come through a push service.
///
/// Threads: main; answers come on main, after the call has returned.
class RemoteNotifications {
public:
    RemoteNotifications() = default;
    RemoteNotifications(const RemoteNotifications &) = delete;
    RemoteNotifications &operator=(const RemoteNotifications &) = delete;
    virtual ~RemoteNotifications() = default;

    /// Registers this device. The answer is its token, or why it has none; it may come again, with another
    /// token, as long as the program runs.
    virtual void
    registerForRemoteNotifications(std::function<void(const Result<Bytes> &deviceToken)> didRegister) = 0;
};

} // namespace skyflare
