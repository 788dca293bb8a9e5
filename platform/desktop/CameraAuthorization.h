#pragma once

#include <functional>

namespace skyflare {

/// Whether the app may use the camera.
enum class CameraAuthorizationStatus { NotDetermined = 0, Restricted = 1, Denied = 2, Authorized = 3 };

/// The permission to use the camera.
///
/// Threads: main; answers come on any thread, after the call has returned.
class CameraAuthorization {
public:
    CameraAuthorization() = default;
    CameraAuthorization(const CameraAuthorization &) = delete;
    CameraAuthorization &operator=(const CameraAuthorization &) = delete;
    virtual ~CameraAuthorization() = default;

    // authorizationStatusForMediaType:
    [[nodiscard]] virtual CameraAuthorizationStatus authorizationStatus() = 0;

    // requestAccessForMediaType:completionHandler:
    /// Asks the user, if it is not determined; only from a tap of the user's.
    virtual void requestAccess(std::function<void(bool granted)> completionHandler) = 0;
};

} // namespace skyflare
