#pragma once

#include "platform/base/NotificationCenter.h"

#include <set>

namespace skyflare {

/// Whether the app is before the user: it is unless there is a reason against it. Posts
/// "UIApplicationWillResignActiveNotification" when the first reason arises, and
/// "UIApplicationDidBecomeActiveNotification" when the last one has gone.
///
/// Threads: main. Borrows the centre.
class AppActivity {
public:
    enum class Reason { WindowHidden, OtherAppInFront, SessionLocked, MachineAsleep, ProgramEnding };

    /// Inactive: the window has not been shown yet.
    explicit AppActivity(NotificationCenter &notificationCenter) : notificationCenter_(notificationCenter) {}

    [[nodiscard]] bool isActive() const { return reasons_.empty(); }

    void arises(Reason reason);
    void goes(Reason reason);
    /// Somebody has used the window: whatever was said of it, it is before them. Not every screen locker
    /// tells when it has been unlocked. An app that ends stays inactive.
    void userIsHere();

private:
    NotificationCenter &notificationCenter_;
    std::set<Reason> reasons_{Reason::WindowHidden};

    void become(std::set<Reason> reasons);
};

} // namespace skyflare
