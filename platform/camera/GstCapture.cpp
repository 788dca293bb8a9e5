#include "platform/camera/GstCapture.h"

#include "platform/camera/GstCaptureSession.h"
#include "platform/camera/GstPhotoOutput.h"
#include "platform/camera/GstSetup.h"

namespace skyflare {

GstCapture::GstCapture(Services services)
    : services_(std::move(services)), controlQueue_(services_.queues.makeSerialQueue("camera"))
{
}

GstCapture::~GstCapture()
{
    // What does not come down is left behind: it keeps alive what it needs.
    static_cast<void>(graphs_->waitForNone(std::chrono::seconds(3)));
}

std::shared_ptr<CaptureSession> GstCapture::makeSession()
{
    if (!initialiseGStreamer())
        return nullptr;
    return std::make_shared<GstCaptureSession>(GstCaptureSession::Services{
        controlQueue_, services_.queues.globalUserInitiated(), graphs_, services_.gate});
}

std::shared_ptr<PhotoOutput> GstCapture::makePhotoOutput()
{
    return std::make_shared<GstPhotoOutput>();
}

Result<std::shared_ptr<CaptureDeviceInput>> GstCapture::makeDeviceInput(std::shared_ptr<CaptureDevice> device)
{
    if (!device)
        return Error{"camera", 0, "there is no camera"};
    if (!std::dynamic_pointer_cast<CameraSource>(device))
        return Error{"camera", 0, device->localizedName() + " is not a camera that can be read here"};
    return std::make_shared<CaptureDeviceInput>(std::move(device));
}

std::shared_ptr<CaptureDevice> GstCapture::defaultDevice(DeviceType /*type*/, DevicePosition /*position*/)
{
    return services_.camera;
}

} // namespace skyflare
