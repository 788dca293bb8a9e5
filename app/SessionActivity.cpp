#include "app/SessionActivity.h"

#include "screens/main/MainViewController.h"

#include <utility>

namespace skyflare {

void SessionActivity::observe(UserSession &session)
{
    const auto weak = weak_from_this();
    session.observe({.willSleep =
                         [weak](std::shared_ptr<const void> delay) {
                             const auto self = weak.lock();
                             if (!self)
                                 return;
                             self->resign();
                             self->keepUntilStored_(std::move(delay));
                         },
                     .didLock =
                         [weak] {
                             if (const auto self = weak.lock())
                                 self->resign();
                         }});
}

void SessionActivity::resign()
{
    notificationCenter_.postNotificationName(applicationWillResignActiveNotification);
}

} // namespace skyflare
