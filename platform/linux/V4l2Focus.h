#pragma once

#include "platform/camera/FocusControl.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace skyflare {

/// The focus motor of a video device, through the controls of v4l2.
///
/// Once: the driver's single search where it has one, else its continuous search begun anew; a motor without
/// any search goes to infinity, where the sky is. v4l2 of Debian 12 knows no point to focus on.
/// Threads: any, one at a time.
/// Holds the device only while locked.
class V4l2Focus final : public FocusControl {
public:
    /// As ioctl() on an open device: 0, or the errno. Letting go of it closes the device.
    using DeviceCall = std::function<int(unsigned long request, void *argument)>;
    using OpenDevice = std::function<Result<DeviceCall>(const std::string &path)>;

    /// Opens the device itself, for this process alone among those that do the same.
    static Result<DeviceCall> openDevice(const std::string &path);

    explicit V4l2Focus(std::string path, OpenDevice open = &openDevice)
        : path_(std::move(path)), open_(std::move(open))
    {
    }

    Result<> lock() override;
    void setPointOfInterest(Point) override {}
    void setMode(FocusMode mode) override;
    void unlock() override { device_ = nullptr; }

private:
    const std::string path_;
    const OpenDevice open_;
    DeviceCall device_; ///< while locked

    [[nodiscard]] std::optional<std::int32_t> leastOf(std::uint32_t control) const;
    [[nodiscard]] bool set(std::uint32_t control, std::int32_t value) const;
    void focusOnce() const;
};

} // namespace skyflare
