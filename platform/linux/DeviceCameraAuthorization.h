#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/CameraAuthorization.h"

#include <filesystem>

namespace skyflare {

/// The permission to use a camera that is a device file: what the kernel lets this user do.
///
/// It is never undetermined, so nobody is asked. A device that is away is authorised: starting it tells.
///
/// Threads: main. Borrows the main queue.
class DeviceCameraAuthorization final : public CameraAuthorization {
public:
    /// @param device  such as /dev/video0; empty for a camera without a device file, which all may use
    DeviceCameraAuthorization(std::filesystem::path device, SerialQueue &mainQueue);

    /// A camera's device file that this user may not open, which is why no camera is found; empty: none.
    static std::filesystem::path refusedDevice();

    [[nodiscard]] CameraAuthorizationStatus authorizationStatus() override;
    void requestAccess(std::function<void(bool granted)> completionHandler) override;

private:
    const std::filesystem::path device_;
    SerialQueue &mainQueue_;
};

} // namespace skyflare
