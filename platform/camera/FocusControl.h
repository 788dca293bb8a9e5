#pragma once

#include "platform/camera/CaptureDevice.h"

#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// The focus motor of one camera.
///
/// Threads: any, one at a time.
class FocusControl {
public:
    virtual ~FocusControl() = default;

    /// Takes the motor for oneself; an error while somebody else has it, or where it cannot be reached.
    virtual Result<> lock() = 0;
    /// Where to focus next. A motor that cannot take a point ignores it.
    virtual void setPointOfInterest(Point point) = 0;
    /// AutoFocus focuses once, on the point if there is one.
    virtual void setMode(FocusMode mode) = 0;
    virtual void unlock() = 0;
};

/// Opens the focus motor of the video device at `path` ("/dev/video0"); empty where there is none.
using FocusControlFactory = std::function<std::shared_ptr<FocusControl>(const std::string &path)>;

} // namespace skyflare
