#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/PhotoLibrary.h"

#include <filesystem>

namespace skyflare {

/// The photo library of a Linux desktop: a folder of PNG files that every viewer shows.
///
/// A photo's file is named by its moment in local time, "Skyflare 2026-11-22 22.03.53.412.png", carries it in
/// its EXIF and as its file time, and never takes the place of another. It appears whole or not at all:
/// written under a hidden name, synced, then renamed. A folder that is missing is made.
///
/// Threads: any; works and answers on `queue`, which may outlive it. Borrows the queue.
class PicturesLibrary final : public PhotoLibrary {
public:
    /// @param folder such as ~/Pictures/Skyflare. What a killed process left there half-written is removed.
    PicturesLibrary(std::filesystem::path folder, DispatchQueue &queue);

    /// Authorized when a file can be made in the folder, else Denied: it is tried.
    void requestAuthorization(std::function<void(AuthorizationStatus)> completion) override;
    void createAsset(const Image &image, double creationDate,
                     std::function<void(const LibraryChange &)> completion) override;

private:
    const std::filesystem::path folder_;
    DispatchQueue &queue_;
};

} // namespace skyflare
