#pragma once

#include "platform/base/Result.h"
#include "platform/camera/GstHandles.h"

namespace skyflare {

/// Makes GStreamer ready, once for the process, without looking at the program's arguments. Any thread.
Result<> initialiseGStreamer();

/// A new element of GStreamer's own, held by its only reference. An error names what is not installed.
Result<Element> makeGstElement(const char *factory);

} // namespace skyflare
