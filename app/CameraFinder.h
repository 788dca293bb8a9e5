#pragma once

#include "platform/base/Result.h"

#include <functional>
#include <memory>
#include <string>

namespace skyflare {

class PortalCamera;
struct CameraChoice;

/// Finds the camera of that name, and makes ready what every camera needs. On a thread of its own.
using CameraFinder = std::function<Result<CameraChoice>(const std::string &name)>;

/// What the machine has, or the simulated one: chooseCamera().
Result<CameraChoice> findCamera(const std::string &name);

/// From within a sandbox: "auto" is the desktop's camera, or the simulated one where the desktop says that it
/// has none; any other name is looked for as elsewhere.
/// @param portal  asks the user, and opens the camera for each run. Outlives what it finds
CameraFinder findInSandbox(std::shared_ptr<PortalCamera> portal, CameraFinder elsewhere);

} // namespace skyflare
