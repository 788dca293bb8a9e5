#pragma once

#include <functional>
#include <memory>

namespace skyflare {

/// The user's session on this machine: it is locked, and it sleeps with the machine.
///
/// Threads: main.
class UserSession {
public:
    struct Handlers {
        /// The machine is about to sleep. It waits until `delay` has been let go of, a few seconds at most.
        std::function<void(std::shared_ptr<const void> delay)> willSleep;
        std::function<void()> didWake; ///< or it does not sleep after all
        std::function<void()> didLock; ///< also when it was locked already
        std::function<void()> didUnlock;
    };

    UserSession() = default;
    UserSession(const UserSession &) = delete;
    UserSession &operator=(const UserSession &) = delete;
    virtual ~UserSession() = default;

    /// Calls them on main from now on, until the session is let go of. Once. Never where nobody tells us.
    virtual void observe(Handlers handlers) = 0;
};

} // namespace skyflare
