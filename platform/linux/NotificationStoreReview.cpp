#include "platform/linux/NotificationStoreReview.h"

#include "platform/base/Localization.h"

#include <utility>

namespace skyflare {

namespace {

constexpr std::string_view askedVersionKey = "reviewAskedForVersion";

} // namespace

void NotificationStoreReview::requestReview()
{
    if (isAsking_ || record_.stringForKey(askedVersionKey) == services_.appVersion ||
        !services_.urlOpener.canOpenURL(services_.storePage))
        return;
    isAsking_ = true;
    const std::string title = localized("Write a Review");
    const auto weak = weak_from_this();
    services_.notifications->show(
        {.summary = localized("Do you like Skyflare?"),
         .body = localized("Tell others what you think of it."),
         .actions = {{"default", title}, {"review", title}}},
        [weak](const Result<> &shown) {
            if (const auto self = weak.lock())
                self->didAsk(shown);
        },
        [weak](const NotificationBoard::Answer & /*answer*/) {
            if (const auto self = weak.lock())
                self->services_.urlOpener.openURL(self->services_.storePage);
        });
}

void NotificationStoreReview::didAsk(const Result<> &shown)
{
    isAsking_ = false;
    if (shown)
        record_.setObject(services_.appVersion, askedVersionKey);
}

} // namespace skyflare
