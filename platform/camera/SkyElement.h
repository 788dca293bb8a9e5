#pragma once

#include "platform/camera/GstHandles.h"
#include "platform/camera/sky/SkyParameters.h"

namespace skyflare {

/// A GStreamer source that draws a simulated sky: video/x-raw, I420, BT.709, with the times of its frames.
///
/// It never ends. A frame is drawn when the one before has been taken; while the graph plays, frames whose
/// time is over are skipped, so that a slow machine gets fewer frames and not late ones. GStreamer must be
/// ready. Threads: any; draws on the graph's streaming thread.
Element makeSkyElement(const SkyParameters &parameters);

} // namespace skyflare
