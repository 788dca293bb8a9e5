#pragma once

#include "platform/camera/CameraSource.h"
#include "platform/camera/DeviceFacts.h"
#include "platform/camera/FocusControl.h"

#include <memory>
#include <string_view>
#include <vector>

namespace skyflare {

class DeviceTable;

/// The cameras of this machine (v4l2, libcamera, PipeWire), as they come and go.
///
/// There is one for the process: it starts with the first use and never stops, since stopping and freeing
/// PipeWire's provider corrupts the heap with GStreamer 1.22. Each provider of GStreamer has a
/// thread of its own, so that a server that hangs holds up its own cameras alone, and no main loop is needed.
/// Threads: any.
class CameraMonitor {
public:
    /// Starts looking and waits until the first look is done, 5 s at most; then goes on with what is there.
    /// @param focus  opens the focus motors; the first caller's is kept.
    static CameraMonitor &shared(const FocusControlFactory &focus = {});

    CameraMonitor(const CameraMonitor &) = delete;
    CameraMonitor &operator=(const CameraMonitor &) = delete;

    /// An error where no cameras can be looked for at all.
    [[nodiscard]] const Result<> &outcome() const { return outcome_; }

    /// Those that are there now, the best choice first: back, external, front, then what does not say.
    /// A camera that two providers show is listed once.
    [[nodiscard]] std::vector<std::shared_ptr<CameraSource>> cameras() const;

    /// The camera of that name (its whole name, or its device's path, in any case of letters, else a part of
    /// the name that fits one camera alone); an error that says what there is.
    [[nodiscard]] Result<std::shared_ptr<CameraSource>> cameraNamed(std::string_view name) const;

private:
    struct FirstLook;

    explicit CameraMonitor(FocusControlFactory focus);
    ~CameraMonitor() = default; // Deliberate: never called

    void start();
    [[nodiscard]] std::shared_ptr<CameraSource> camera(DeviceFacts facts) const;

    const FocusControlFactory focus_;
    const std::shared_ptr<DeviceTable> devices_;
    const std::shared_ptr<FirstLook> firstLook_;
    Result<> outcome_;
};

} // namespace skyflare
