#include "platform/desktop/AppNotificationCenter.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

using Auth = UNAuthorizationOptions;
using Options = UNNotificationPresentationOptions;
using Place = NotificationBoard::Place;
using Sound = NotificationBoard::Sound;

constexpr const char *itself = "default"; ///< the action of choosing the notification

NotificationBoard::Content contentOf(const UserNotification &notification, Place place, Sound sound)
{
    return {.summary = notification.title,
            .body = notification.body,
            .actions = {{itself, "Skyflare"}},
            .choice = NotificationBoard::Choice::Welcome,
            .identifier = notification.identifier,
            .sound = sound,
            .place = place};
}

} // namespace

void AppNotificationCenter::requestAuthorizationWithOptions(UNAuthorizationOptions options,
                                                            Authorization completionHandler)
{
    authorized_ = authorized_ | options;
    services_.board->askWhetherThere(
        [completionHandler = std::move(completionHandler)](const Result<> &isThere) {
            if (isThere)
                completionHandler(true, {});
            else
                completionHandler(false, isThere.error());
        });
}

void AppNotificationCenter::addNotificationRequest(const UserNotification &notification,
                                                   std::function<void(const Result<> &)> completionHandler)
{
    if (authorized_ == Auth::None) {
        services_.mainQueue.async([completionHandler = std::move(completionHandler)] {
            completionHandler(Error{"notifications", 0, "the app has not asked to show notifications"});
        });
        return;
    }
    constexpr Options all = Options::Badge | Options::Sound | Options::List | Options::Banner;
    if (delegate_ == nullptr || !services_.isInFront()) {
        present(notification, all, completionHandler);
        return;
    }
    delegate_->willPresentNotification(notification,
                                       [weak = weak_from_this(), notification,
                                        completionHandler = std::move(completionHandler)](Options options) {
                                           if (const auto self = weak.lock())
                                               self->present(notification, options, completionHandler);
                                       });
}

void AppNotificationCenter::present(const UserNotification &notification, Options options,
                                    const NotificationBoard::Shown &shown)
{
    const auto may = [&](Options option, Auth authorized) {
        return contains(options, option) && contains(authorized_, authorized);
    };
    if (may(Options::Badge, Auth::Badge))
        count(notification.identifier);
    const bool hasBanner = may(Options::Banner, Auth::Alert);
    const bool isListed = may(Options::List, Auth::Alert);
    if (!hasBanner && !isListed) {
        services_.board->remove(notification.identifier); // what it would have taken the place of
        services_.mainQueue.async([shown] { shown({}); });
        return;
    }
    const Place place = !isListed ? Place::BannerOnly : hasBanner ? Place::Usual : Place::ListOnly;
    const Sound sound = may(Options::Sound, Auth::Sound) ? Sound::NewMessage : Sound::None;
    services_.board->show(contentOf(notification, place, sound), shown,
                          [weak = weak_from_this(), notification](const NotificationBoard::Answer &answer) {
                              if (const auto self = weak.lock())
                                  self->didChoose(notification, answer);
                          });
}

void AppNotificationCenter::count(const std::string &identifier)
{
    const bool replacesOne = !identifier.empty() && std::ranges::find(unseen_, identifier) != unseen_.end();
    if (!replacesOne)
        unseen_.push_back(identifier);
    services_.badge.setCount(unseen_.size());
}

void AppNotificationCenter::didChoose(const UserNotification &notification,
                                      const NotificationBoard::Answer &answer)
{
    const auto seen = std::ranges::find(unseen_, notification.identifier);
    if (seen != unseen_.end()) {
        unseen_.erase(seen);
        services_.badge.setCount(unseen_.size());
    }
    services_.bringToFront(answer.activationToken);
    if (delegate_ != nullptr)
        delegate_->didReceiveNotificationResponse(
            {notification, answer.key == itself ? std::string() : answer.key}, [] {});
}

void AppNotificationCenter::applicationDidBecomeActive()
{
    if (unseen_.empty())
        return;
    unseen_.clear();
    services_.badge.setCount(0);
}

} // namespace skyflare
