#pragma once

#include "platform/camera/CameraSource.h"
#include "platform/camera/FocusControl.h"

#include <memory>
#include <string>

namespace skyflare {

/// The camera that a program works with; chosen once, at its start.
struct CameraChoice {
    enum class Kind {
        Device,
        Simulated,        ///< as it was asked for
        SimulatedInstead, ///< since there is no camera
        Remote,           ///< the desktop's, which asks the user first
    };

    std::shared_ptr<CameraSource> camera; ///< always there
    Kind kind = Kind::Device;
};

/// The camera of that name: "auto" is the best there is, "simulated:…" is what SimulatedSkySource::parse()
/// takes, anything else names a device. Looks for cameras, 5 s at most: not on a main thread that serves a
/// window. The error is one line for a person. Any thread.
/// @param focus  opens the focus motors
Result<CameraChoice> chooseCamera(const std::string &name, const FocusControlFactory &focus);

} // namespace skyflare
