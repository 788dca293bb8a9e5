#pragma once

#include "platform/camera/CaptureSession.h"

#include <memory>

namespace skyflare {

/// A session that shows one picture of the simulated sky, in the middle of a burst, whenever it is asked to.
class PictureCamera {
public:
    PictureCamera();
    [[nodiscard]] CaptureSession &session() { return *session_; }
    [[nodiscard]] const VideoFrame &frame() const { return frame_; }
    /// To whoever shows the session's preview.
    void show() const;

private:
    std::shared_ptr<CaptureSession> session_;
    VideoFrame frame_;
};

} // namespace skyflare
