#include "app/AppActivity.h"

#include "ui/ApplicationNotifications.h"

#include <utility>

namespace skyflare {

void AppActivity::arises(Reason reason)
{
    auto reasons = reasons_;
    reasons.insert(reason);
    become(std::move(reasons));
}

void AppActivity::goes(Reason reason)
{
    auto reasons = reasons_;
    reasons.erase(reason);
    become(std::move(reasons));
}

void AppActivity::userIsHere()
{
    auto reasons = reasons_;
    std::erase_if(reasons, [](Reason reason) { return reason != Reason::ProgramEnding; });
    become(std::move(reasons));
}

void AppActivity::become(std::set<Reason> reasons)
{
    const bool wasActive = isActive();
    reasons_ = std::move(reasons);
    if (wasActive != isActive())
        notificationCenter_.postNotificationName(wasActive ? applicationWillResignActiveNotification
                                                           : applicationDidBecomeActiveNotification);
}

} // namespace skyflare
