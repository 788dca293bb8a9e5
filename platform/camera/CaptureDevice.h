#pragma once

#include "platform/base/Result.h"

#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

enum class DevicePosition { Unspecified, Back, Front, External };

/// A position in words: "back", "front", "external", "unspecified".
constexpr std::string_view nameOf(DevicePosition position)
{
    switch (position) {
    case DevicePosition::Back:
        return "back";
    case DevicePosition::Front:
        return "front";
    case DevicePosition::External:
        return "external";
    case DevicePosition::Unspecified:
        break;
    }
    return "unspecified";
}

enum class DeviceType { BuiltInWideAngleCamera };

enum class FocusMode { Locked = 0, AutoFocus = 1, ContinuousAutoFocus = 2 };

/// A point of the sensor: (0, 0) is its top left, (1, 1) its bottom right.
struct Point {
    double x = 0;
    double y = 0;
};

/// A size and rate at which a device gives pictures.
struct CaptureFormat {
    int width = 0;              ///< pixels
    int height = 0;             ///< pixels
    double framesPerSecond = 0; ///< 0 where it is not known beforehand
};

/// Something that gives pictures: a camera, the simulated sky, a film.
///
/// Threads: any; a configuration lock belongs to the thread that took it.
class CaptureDevice {
public:
    CaptureDevice() = default;
    CaptureDevice(const CaptureDevice &) = delete;
    CaptureDevice &operator=(const CaptureDevice &) = delete;
    virtual ~CaptureDevice() = default;

    [[nodiscard]] virtual std::string localizedName() const = 0;
    [[nodiscard]] virtual DevicePosition position() const = 0;
    [[nodiscard]] virtual std::vector<CaptureFormat> formats() const = 0;

    /// Takes the device's configuration for oneself; an error while somebody else has it.
    virtual Result<> lockForConfiguration() = 0;
    /// Where to focus. A device that cannot take a point ignores it.
    virtual void setFocusPointOfInterest(Point point) = 0;
    virtual void setFocusMode(FocusMode mode) = 0;
    virtual void unlockForConfiguration() = 0;
};

} // namespace skyflare
