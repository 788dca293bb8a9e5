#pragma once

#include "platform/base/Bytes.h"
#include "platform/camera/CameraSource.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace skyflare::bench {

/// Pictures of a noisy night, drawn beforehand, and the order in which a camera gives them over and over.
struct Ring {
    enum class Format { I420, NV12 };

    Format format = Format::NV12;
    int width = 0;  ///< pixels, even
    int height = 0; ///< pixels, even
    double framesPerSecond = 0;
    std::vector<Bytes> pictures;
    std::vector<std::size_t> order; ///< of `pictures`

    [[nodiscard]] std::size_t bytes() const;
};

/// `count` dark pictures; with a `flash`, each is followed by a copy that is bright enough to trigger.
enum class Flash { No, AfterEach };
Ring drawRing(Ring::Format format, int width, int height, int count, Flash flash);

/// A live camera that does next to nothing: it hands out the pictures of a ring in their time, without
/// copying one.
///
/// Threads: any.
class RingCamera final : public CameraSource {
public:
    explicit RingCamera(std::shared_ptr<const Ring> ring) : ring_(std::move(ring)) {}

    [[nodiscard]] std::string localizedName() const override { return "ring"; }
    [[nodiscard]] DevicePosition position() const override { return DevicePosition::Back; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override
    {
        return {{ring_->width, ring_->height, ring_->framesPerSecond}};
    }
    Result<> lockForConfiguration() override { return {}; }
    void setFocusPointOfInterest(Point) override {}
    void setFocusMode(FocusMode) override {}
    void unlockForConfiguration() override {}

    Result<Element> makeElement() const override;
    [[nodiscard]] Pacing pacing() const override { return Pacing::Live; }

private:
    const std::shared_ptr<const Ring> ring_;
};

} // namespace skyflare::bench
