#include "platform/linux/DeviceCameraAuthorization.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace skyflare {

namespace {

bool isRefused(const std::filesystem::path &device)
{
    return !device.empty() && ::access(device.c_str(), R_OK | W_OK) != 0 &&
           (errno == EACCES || errno == EPERM);
}

} // namespace

DeviceCameraAuthorization::DeviceCameraAuthorization(std::filesystem::path device, SerialQueue &mainQueue)
    : device_(std::move(device)), mainQueue_(mainQueue)
{
}

std::filesystem::path DeviceCameraAuthorization::refusedDevice()
{
    constexpr int mostDevices = 64; // the kernel's numbers begin at 0
    for (int number = 0; number < mostDevices; ++number) {
        std::filesystem::path device = "/dev/video" + std::to_string(number);
        if (isRefused(device))
            return device;
    }
    return {};
}

CameraAuthorizationStatus DeviceCameraAuthorization::authorizationStatus()
{
    return isRefused(device_) ? CameraAuthorizationStatus::Denied : CameraAuthorizationStatus::Authorized;
}

void DeviceCameraAuthorization::requestAccess(std::function<void(bool granted)> completionHandler)
{
    const bool granted = authorizationStatus() == CameraAuthorizationStatus::Authorized;
    mainQueue_.async(
        [granted, completionHandler = std::move(completionHandler)] { completionHandler(granted); });
}

} // namespace skyflare
