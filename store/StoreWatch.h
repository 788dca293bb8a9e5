#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/base/NotificationCenter.h"
#include "store/PersistentContainerProvider.h"

#include <memory>
#include <mutex>

namespace skyflare {

/// Posts "CountDidChange" when another process has stored or deleted photos, four times a second at most.
///
/// It looks when it is told that the store's file has been written to, and twice more a little later: a slow
/// disk syncs for a while between the last write and the moment at which others see it. Otherwise it sleeps.
///
/// Threads: fileChanged() on any; it looks, and posts, on the queue. Borrows its Services, which must outlive
/// what the queue has accepted.
class StoreWatch : public std::enable_shared_from_this<StoreWatch> {
public:
    struct Services {
        PersistentContainerProvider &delegate;
        NotificationCenter &notificationCenter;
        DispatchQueue &queue;
    };

    explicit StoreWatch(const Services &services) : services_(services) {}

    void fileChanged();

private:
    const Services services_;
    std::mutex mutex_;
    int series_ = 0;            ///< of looks; a new one ends the one before
    bool isFirstAhead_ = false; ///< the first look of this series

    void lookLater(int series, std::size_t number);
    void look(int series, std::size_t number);
};

} // namespace skyflare
