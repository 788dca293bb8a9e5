#pragma once

#include "platform/camera/CaptureSession.h"
#include "platform/image/Image.h"

#include <cstdint>
#include <optional>
#include <string>

namespace skyflare {

/// Whoever shows what a CaptureManager sees. Every report comes on the main queue.
class LightningCaptureManagerDelegate {
public:
    virtual ~LightningCaptureManagerDelegate() = default;

    /// The brightness of the latest frame, 0 to 1. The frame queue waits for its end.
    virtual void updateLightPower(double brightness) = 0;

    /// A status text, for `duration` seconds unless it is permanent.
    virtual void updateStatus(const std::optional<std::string> &text, int duration, bool isPermanent) = 0;

    /// A photo has been handed to the store, which now holds `totalPhotos`; `difference` is the rise of the
    /// latest trigger.
    virtual void didCapturePhoto(const Image &image, std::int64_t totalPhotos, float difference) = 0;

    /// The running session has started, ended, been lost, failed or stopped.
    virtual void sessionDidChange(const SessionEvent &event) = 0;
};

} // namespace skyflare
