#include "platform/camera/GstPhotoOutput.h"

namespace skyflare {

void GstPhotoOutput::capturePhoto(const CapturePhotoSettings &settings,
                                  std::shared_ptr<PhotoCaptureDelegate> delegate)
{
    std::shared_ptr<StillRequests> requests;
    {
        const std::scoped_lock lock(mutex_);
        requests = requests_;
    }
    if (requests)
        requests->request(settings, std::move(delegate));
    else
        delegate->didFinishProcessingPhoto({}, Error{"camera", 0, "the camera is not running"});
}

void GstPhotoOutput::attach(std::shared_ptr<StillRequests> requests)
{
    const std::scoped_lock lock(mutex_);
    requests_ = std::move(requests);
}

} // namespace skyflare
