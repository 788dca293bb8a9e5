#pragma once

#include "platform/camera/CaptureDevice.h"

#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// What --list-cameras prints: a line a camera with name and position, below it a line a size with its rates.
std::string cameraList(const std::vector<std::shared_ptr<const CaptureDevice>> &cameras);

} // namespace skyflare
