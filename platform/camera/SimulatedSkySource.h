#pragma once

#include "platform/camera/CameraSource.h"
#include "platform/camera/sky/SkyParameters.h"

#include <atomic>
#include <string_view>

namespace skyflare {

/// The simulated sky as a camera: a night with fireworks that never ends.
///
/// It keeps to the clock as a camera does: where drawing is too slow, frames are left out.
/// Threads: any.
class SimulatedSkySource final : public CameraSource {
public:
    /// @param parameters  within the limits that SkyParameters names.
    explicit SimulatedSkySource(const SkyParameters &parameters = {}) : parameters_(parameters) {}

    /// From what a user writes: "simulated", "simulated:1280x720@60,seed=7"; every part of it may be left
    /// out. The error says in one line what is wrong with anything else.
    static Result<std::shared_ptr<SimulatedSkySource>> parse(std::string_view text);

    [[nodiscard]] const SkyParameters &parameters() const { return parameters_; }

    [[nodiscard]] std::string localizedName() const override { return "Simulated sky"; }
    [[nodiscard]] DevicePosition position() const override { return DevicePosition::Back; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override;

    Result<> lockForConfiguration() override;
    /// The sky is always in focus.
    void setFocusPointOfInterest(Point) override {}
    void setFocusMode(FocusMode) override {}
    void unlockForConfiguration() override { isLocked_ = false; }

    Result<Element> makeElement() const override;
    [[nodiscard]] Pacing pacing() const override { return Pacing::RealTime; }

private:
    SkyParameters parameters_;
    std::atomic<bool> isLocked_ = false;
};

} // namespace skyflare
