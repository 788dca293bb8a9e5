#pragma once

#include "platform/base/Result.h"
#include "platform/image/Image.h"

#include <functional>
#include <optional>

namespace skyflare {

/// Whether the user lets the app add photos to the library.
enum class AuthorizationStatus { NotDetermined = 0, Restricted = 1, Denied = 2, Authorized = 3, Limited = 4 };

/// How a change to the library ended. It can fail without an error to show for it.
struct LibraryChange {
    bool success = false;
    std::optional<Error> error;
};

/// The device's photo library.
///
/// Threads: any; answers come on a thread of the library's choosing, after the call has returned.
class PhotoLibrary {
public:
    PhotoLibrary() = default;
    PhotoLibrary(const PhotoLibrary &) = delete;
    PhotoLibrary &operator=(const PhotoLibrary &) = delete;
    virtual ~PhotoLibrary() = default;

    virtual void requestAuthorization(std::function<void(AuthorizationStatus)> completion) = 0;

    // creationRequestForAssetFromImage:
    /// Adds `image` as a new photo taken at `creationDate` (seconds since 1970).
    virtual void createAsset(const Image &image, double creationDate,
                             std::function<void(const LibraryChange &)> completion) = 0;
};

} // namespace skyflare
