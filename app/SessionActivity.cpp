#include "app/SessionActivity.h"

#include <utility>

namespace skyflare {

void SessionActivity::observe(UserSession &session)
{
    session.observe({.willSleep =
                         [weak = weak_from_this()](std::shared_ptr<const void> delay) {
                             if (const auto self = weak.lock())
                                 self->willSleep(std::move(delay));
                         },
                     .didWake = whenItComes(&AppActivity::goes, Reason::MachineAsleep),
                     .didLock = whenItComes(&AppActivity::arises, Reason::SessionLocked),
                     .didUnlock = whenItComes(&AppActivity::goes, Reason::SessionLocked)});
}

void SessionActivity::willSleep(std::shared_ptr<const void> delay)
{
    activity_.arises(Reason::MachineAsleep);
    keepUntilStored_(std::move(delay));
}

std::function<void()> SessionActivity::whenItComes(void (AppActivity::*change)(Reason), Reason reason)
{
    return [weak = weak_from_this(), change, reason] {
        if (const auto self = weak.lock())
            (self->activity_.*change)(reason);
    };
}

} // namespace skyflare
