#pragma once

#include "platform/base/Result.h"
#include "platform/camera/GstHandles.h"

namespace skyflare {

/// What every camera of PipeWire's needs. Threads: any.

/// Without "Video" PipeWire's session manager takes the stream for sound, and silently lets go of it. Not
/// every camera of PipeWire's says when its pictures were taken: then the moment counts at which they come.
/// And each picture is copied: its memory is taken away while it is still looked at when the camera goes.
void setUpPipeWire(GstElement *pipewireSource);

/// When a bin has its pad "src": at once, or when it is known what comes out of it.
enum class PadComes { AtOnce, WithItsCaps };

/// A bin that gives what `source` does, as long as that is of `format`.
Result<Element> heldToFormat(Element source, const GstCaps *format, PadComes padComes);

} // namespace skyflare
