#pragma once

#include "app/AppActivity.h"
#include "platform/desktop/UserSession.h"

#include <functional>
#include <memory>

namespace skyflare {

/// Tells the app's activity what becomes of the user's session: whether it is locked, and whether the machine
/// sleeps. Before it does it waits until the photos of a run are stored.
///
/// Threads: main. Shared. Borrows the session and the activity.
class SessionActivity final : public std::enable_shared_from_this<SessionActivity> {
public:
    /// Keeps what it is given until all that has been photographed is stored.
    using KeepUntilStored = std::function<void(std::shared_ptr<const void>)>;

    SessionActivity(AppActivity &activity, KeepUntilStored keepUntilStored)
        : activity_(activity), keepUntilStored_(std::move(keepUntilStored))
    {
    }

    /// Once.
    void observe(UserSession &session);

private:
    using Reason = AppActivity::Reason;

    AppActivity &activity_;
    const KeepUntilStored keepUntilStored_;

    void willSleep(std::shared_ptr<const void> delay);
    /// What hands that on, as long as this lives.
    std::function<void()> whenItComes(void (AppActivity::*change)(Reason), Reason reason);
};

} // namespace skyflare
