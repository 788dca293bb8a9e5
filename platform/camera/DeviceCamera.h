#pragma once

#include "platform/camera/CameraSource.h"
#include "platform/camera/DeviceFacts.h"
#include "platform/camera/DeviceTable.h"
#include "platform/camera/FocusControl.h"

#include <mutex>

namespace skyflare {

/// A camera of this machine, whether it is there just now or not: when it comes back it can be read again.
///
/// Threads: any.
/// Shares the table of devices.
class DeviceCamera final : public CameraSource {
public:
    DeviceCamera(DeviceFacts facts, std::shared_ptr<DeviceTable> devices, FocusControlFactory focus)
        : facts_(std::move(facts)), devices_(std::move(devices)), makeFocus_(std::move(focus))
    {
    }

    [[nodiscard]] std::string localizedName() const override { return facts_.name; }
    [[nodiscard]] DevicePosition position() const override { return facts_.position; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override { return facts_.formats; }

    /// A camera without a motor that can be reached is locked all the same, and ignores what it is told.
    Result<> lockForConfiguration() override;
    void setFocusPointOfInterest(Point point) override;
    void setFocusMode(FocusMode mode) override;
    void unlockForConfiguration() override;

    /// The device that is there now, held to the format that chosenCaps() takes; an error while it is away.
    Result<Element> makeElement() const override;
    [[nodiscard]] Pacing pacing() const override { return Pacing::Live; }
    [[nodiscard]] std::string identity() const override { return facts_.identity; }
    [[nodiscard]] std::string devicePath() const override { return facts_.v4l2Path; }
    [[nodiscard]] std::shared_ptr<void> whenRemoved(std::function<void()> removed) const override;

private:
    const DeviceFacts facts_;
    const std::shared_ptr<DeviceTable> devices_;
    const FocusControlFactory makeFocus_;

    std::mutex mutex_;
    bool isLocked_ = false;
    std::shared_ptr<FocusControl> focus_; ///< while locked, of a camera that has one

    std::shared_ptr<FocusControl> lockedFocus();
};

} // namespace skyflare
