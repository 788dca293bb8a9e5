#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/image/ReducedPicture.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace skyflare {

/// Small copies of the stored photos, a file each, named by the photo's uuid. It may be deleted at any time,
/// by anybody: what is missing is made anew when it is wanted. Where nothing can be written there is no
/// cache, and that is no error.
///
/// Threads: any; several processes at once. Files are removed on the queue, which is borrowed.
class ThumbnailCache {
public:
    /// @param folder  made when it is first written to.
    ThumbnailCache(std::filesystem::path folder, DispatchQueue &queue)
        : folder_(std::move(folder)), queue_(queue)
    {
    }

    /// The place of a photo's copy, which works on when the cache has ended; null for an identity that is no
    /// name for a file.
    [[nodiscard]] std::shared_ptr<const ReducedPicture> reducedPicture(std::string_view uuid) const;

    void remove(std::string_view uuid);

    /// Removes the copies of photos that are not wanted, and what killed processes have left.
    /// @param isWanted  asked on the queue, once for each file.
    void sweep(std::function<bool(const std::string &uuid)> isWanted);

private:
    const std::filesystem::path folder_;
    DispatchQueue &queue_;
};

} // namespace skyflare
