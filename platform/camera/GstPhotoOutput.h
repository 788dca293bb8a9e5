#pragma once

#include "platform/camera/CaptureOutput.h"
#include "platform/camera/StillRequests.h"

namespace skyflare {

/// The stills of a GstCaptureSession: hands each request to the run that is on.
///
/// Threads: any.
class GstPhotoOutput final : public PhotoOutput {
public:
    void capturePhoto(const CapturePhotoSettings &settings,
                      std::shared_ptr<PhotoCaptureDelegate> delegate) override;

    /// The session starts a new run.
    void attach(std::shared_ptr<StillRequests> requests);

private:
    std::mutex mutex_;
    std::shared_ptr<StillRequests> requests_;
};

} // namespace skyflare
