#pragma once

#include "platform/base/Result.h"
#include "platform/camera/GstHandles.h"

namespace skyflare {

/// Makes GStreamer ready, once for the process, without looking at the program's arguments. Any thread.
Result<> initialiseGStreamer();

/// A new element of GStreamer's own, held by its only reference. An error names what is not installed.
Result<Element> makeGstElement(const char *factory);

/// A new pipeline with nothing in it. GStreamer must be ready.
Pipeline makePipeline();

/// Says for `sink` that rows may be padded, and pictures be a part of what is there: unless told so, a camera
/// or a decoder that gives such ones copies each frame.
void takePaddedPictures(GstElement *sink);

} // namespace skyflare
