#include "app/LaunchCamera.h"

#include <thread>
#include <utility>

namespace skyflare {

LaunchCamera::LaunchCamera(Services services) : services_(std::move(services)) {}

LaunchCamera::~LaunchCamera() = default;

LaunchCamera::Found LaunchCamera::look(const Services &services)
{
    Found found{.choice = services.choose(), .refusedDevice = {}};
    if (found.choice && found.choice->kind == CameraChoice::Kind::SimulatedInstead)
        found.refusedDevice = services.refusedDevice();
    return found;
}

void LaunchCamera::choose(Chosen chosen)
{
    isChoosing_ = true;
    // Not on a queue: the program's end waits for those, and a camera server that hangs takes seconds.
    std::thread([this, chosen = std::move(chosen)] {
        services_.mainQueue.async([this, found = look(services_), chosen] { didChoose(found, chosen); });
    }).detach();
}

void LaunchCamera::didChoose(const Found &found, const Chosen &chosen)
{
    isChoosing_ = false;
    const bool hasCamera = found.choice && found.refusedDevice.empty();
    const auto kind = hasCamera ? found.choice->kind : CameraChoice::Kind::Device;
    const std::shared_ptr<CameraSource> camera = hasCamera ? found.choice->camera : nullptr;
    framework_ = services_.makeFramework(camera);
    authorization_ = services_.makeAuthorization(kind, camera ? std::filesystem::path(camera->devicePath())
                                                              : found.refusedDevice);
    const bool isSimulated =
        kind == CameraChoice::Kind::Simulated || kind == CameraChoice::Kind::SimulatedInstead;
    chosen(found.choice ? Result<bool>(isSimulated) : Result<bool>(found.choice.error()));
    for (const auto &completionHandler : std::exchange(waiting_, {}))
        authorization_->requestAccess(completionHandler);
}

CameraAuthorizationStatus LaunchCamera::authorizationStatus()
{
    return authorization_ ? authorization_->authorizationStatus() : CameraAuthorizationStatus::NotDetermined;
}

void LaunchCamera::requestAccess(std::function<void(bool granted)> completionHandler)
{
    if (authorization_)
        authorization_->requestAccess(std::move(completionHandler));
    else
        waiting_.push_back(std::move(completionHandler));
}

std::shared_ptr<CaptureSession> LaunchCamera::makeSession()
{
    return framework_ ? framework_->makeSession() : nullptr;
}

std::shared_ptr<PhotoOutput> LaunchCamera::makePhotoOutput()
{
    return framework_ ? framework_->makePhotoOutput() : nullptr;
}

Result<std::shared_ptr<CaptureDeviceInput>>
LaunchCamera::makeDeviceInput(std::shared_ptr<CaptureDevice> device)
{
    if (!framework_)
        return Error{"camera", 0, "no camera has been chosen"};
    return framework_->makeDeviceInput(std::move(device));
}

std::shared_ptr<CaptureDevice> LaunchCamera::defaultDevice(DeviceType type, DevicePosition position)
{
    return framework_ ? framework_->defaultDevice(type, position) : nullptr;
}

std::shared_ptr<CaptureDevice> LaunchCamera::defaultVideoDevice()
{
    return framework_ ? framework_->defaultVideoDevice() : nullptr;
}

} // namespace skyflare
