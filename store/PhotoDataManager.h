#pragma once

#include "platform/base/Clock.h"
#include "platform/base/Console.h"
#include "platform/base/NotificationCenter.h"
#include "store/PersistentContainerProvider.h"
#include "store/PhotoModel.h"
#include "store/StorageRoom.h"
#include "store/ThumbnailCache.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

/// Posted after every successful save, delete and delete-all, with no lock of the store held.
inline constexpr std::string_view countDidChange = "CountDidChange";

/// The photo store: saves, fetches, counts and deletes photos. Keeps no state of its own, so everyone who
/// needs it makes one.
///
/// A failure prints one console line and gives an empty, zero or unchanged result.
///
/// Threads: screens call it on main, where no call waits for a writer; photos are saved and counted from
///     the callback thread of a capture. "CountDidChange" comes on the caller's thread.
/// Borrows its Services, which must outlive it.
class PhotoDataManager {
public:
    struct Services {
        PersistentContainerProvider &delegate;
        NotificationCenter &notificationCenter;
        const Clock &clock;
        Console &console;
        ThumbnailCache *thumbnails = nullptr; ///< from which photos are shown small; null: from themselves
        StorageRoom *storageRoom = nullptr;   ///< hears how large stored photos are; may be null
    };

    explicit PhotoDataManager(const Services &services) : services_(services) {}

    /// Stores `image` as PNG with a new identity and the current date; its small copy goes into the cache.
    void saveImage(const Image &image);

    /// The newest photos first, `limit` at most; 0 means all. Photos that are damaged or lack a part are
    /// left out, though they count. Pixels are read only when they are asked for.
    std::vector<PhotoModel> fetchImages(int limit);

    std::int64_t photoCount();
    /// Whether a photo of that identity is in the store, or nobody can tell.
    bool mayHavePhoto(const std::string &uuid);

    /// Deletes every photo of that identity. Posts "CountDidChange" also when there was none.
    void deletePhoto(std::string_view uuid);

    /// Deletes what is in the store. Answers at once; the disk space comes back little by little.
    void deleteAllPhotos();

    /// Whether it is of use that a photo to be saved comes with a small copy.
    [[nodiscard]] bool keepsThumbnails() const { return services_.thumbnails != nullptr; }
    /// Removes small copies whose photo is gone, in the background.
    void sweepThumbnails();

private:
    Services services_;
};

} // namespace skyflare
