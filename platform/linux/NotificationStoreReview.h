#pragma once

#include "platform/base/UserDefaults.h"
#include "platform/desktop/StoreReview.h"
#include "platform/desktop/URLOpener.h"
#include "platform/linux/DesktopNotifications.h"

#include <filesystem>

namespace skyflare {

/// Asks for a review with a notification that opens the app's page in the store.
///
/// It asks once for each version of the app at most; the last one that it has asked for is kept in a file of
/// its own. Where the desktop cannot ask, or nothing opens the page, nothing happens, and it does not count.
/// Threads: main. Shared. Borrows the opener.
class NotificationStoreReview final : public StoreReview,
                                      public std::enable_shared_from_this<NotificationStoreReview> {
public:
    struct Services {
        std::shared_ptr<NotificationBoard> notifications;
        URLOpener &urlOpener;
        Console &console;
        std::filesystem::path record; ///< made with the first question
        std::string appVersion;
        std::string storePage;
    };

    explicit NotificationStoreReview(Services services)
        : services_(std::move(services)), record_(services_.record, services_.console)
    {
    }

    void requestReview() override;

private:
    const Services services_;
    UserDefaults record_;
    bool isAsking_ = false; ///< the desktop has not answered yet

    void didAsk(const Result<> &shown);
};

} // namespace skyflare
