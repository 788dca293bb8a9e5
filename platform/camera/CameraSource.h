#pragma once

#include "platform/camera/CaptureDevice.h"
#include "platform/camera/GstHandles.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// How the frames of a source follow each other.
enum class Pacing {
    Live,     ///< the device gives each frame in its own time; late ones are dropped
    RealTime, ///< the source could go faster: its frames wait for their time; late ones are dropped
    LockStep, ///< each frame waits until the one before has been dealt with; none is dropped
};

/// A device that GStreamer can read: the one thing to write for a new kind of camera.
///
/// Threads: any.
class CameraSource : public CaptureDevice {
public:
    /// A new element, or bin, with one "src" pad (always there, or appearing later) that gives video/x-raw or
    /// image/jpeg.
    virtual Result<Element> makeElement() const = 0;

    [[nodiscard]] virtual Pacing pacing() const = 0;

    /// Sources of the same identity read the same device, which can be opened once: a new graph of it waits
    /// until the old one is down. Empty for what can be opened as often as one likes.
    [[nodiscard]] virtual std::string identity() const { return {}; }

    /// The file by which the kernel gives the device to users, such as "/dev/video0"; empty where it has
    /// none.
    [[nodiscard]] virtual std::string devicePath() const { return {}; }

    /// Calls `removed` when the device is taken away, on any thread, once at most; until what this returns is
    /// let go of. Empty for what cannot be taken away.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): a device keeps what it is given
    [[nodiscard]] virtual std::shared_ptr<void> whenRemoved(std::function<void()> /*removed*/) const
    {
        return {};
    }
};

/// Held by a LockStep session around every frame, on its streaming thread: sets the clock before a frame
/// and returns from didDeliver() only when all that the frame has set going is done.
class FrameGate {
public:
    virtual ~FrameGate() = default;

    /// The frame at `streamTime` comes next.
    virtual void willDeliver(std::chrono::nanoseconds streamTime) = 0;
    /// Its delegate has returned.
    virtual void didDeliver() = 0;
};

} // namespace skyflare
