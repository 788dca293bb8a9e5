#include "platform/linux/DeviceCameraAuthorization.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace skyflare {

DeviceCameraAuthorization::DeviceCameraAuthorization(std::filesystem::path device, SerialQueue &mainQueue)
    : device_(std::move(device)), mainQueue_(mainQueue)
{
}

CameraAuthorizationStatus DeviceCameraAuthorization::authorizationStatus()
{
    const bool isRefused = !device_.empty() && ::access(device_.c_str(), R_OK | W_OK) != 0 &&
                           (errno == EACCES || errno == EPERM);
    return isRefused ? CameraAuthorizationStatus::Denied : CameraAuthorizationStatus::Authorized;
}

void DeviceCameraAuthorization::requestAccess(std::function<void(bool granted)> completionHandler)
{
    const bool granted = authorizationStatus() == CameraAuthorizationStatus::Authorized;
    mainQueue_.async(
        [granted, completionHandler = std::move(completionHandler)] { completionHandler(granted); });
}

} // namespace skyflare
