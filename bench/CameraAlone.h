#pragma once

#include "platform/camera/CameraSource.h"

#include <optional>

namespace skyflare::bench {

/// What a camera costs by itself: the share of one core that this process uses while its frames go into a
/// sink that throws them away. Nothing if it does not run.
/// @param settlingSeconds  the start, which is not counted
std::optional<double> shareOfCameraAlone(const CameraSource &camera, double settlingSeconds,
                                         double watchedSeconds);

} // namespace skyflare::bench
