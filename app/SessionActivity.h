#pragma once

#include "platform/base/NotificationCenter.h"
#include "platform/desktop/UserSession.h"

#include <functional>
#include <memory>

namespace skyflare {

/// Tells the app when the user's session is no longer before the user, by posting
/// "UIApplicationWillResignActiveNotification": it is locked, or the machine is about to sleep. The machine
/// waits until the photos of a run are stored.
///
/// Threads: main. Shared. Borrows the session and the centre.
class SessionActivity final : public std::enable_shared_from_this<SessionActivity> {
public:
    /// Keeps what it is given until all that has been photographed is stored.
    using KeepUntilStored = std::function<void(std::shared_ptr<const void>)>;

    SessionActivity(NotificationCenter &notificationCenter, KeepUntilStored keepUntilStored)
        : notificationCenter_(notificationCenter), keepUntilStored_(std::move(keepUntilStored))
    {
    }

    /// Once.
    void observe(UserSession &session);

private:
    NotificationCenter &notificationCenter_;
    const KeepUntilStored keepUntilStored_;

    void resign();
};

} // namespace skyflare
