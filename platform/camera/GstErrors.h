#pragma once

#include "platform/camera/GstHandles.h"

#include <string>

namespace skyflare {

/// What stops a graph.
struct GraphError {
    std::string line;            ///< one line for a person; without the camera's name, unless isWhole
    bool isWhole = false;        ///< the source has written the line itself: it is shown as it is
    bool isAfterOpening = false; ///< pictures had been found: some may still be on their way
};

/// Has `source` stop its graph with a line that is shown as it is. Any thread.
void postSourceError(GstElement *source, const std::string &line);

/// The same for a picture codec that nothing here decodes.
void postNoDecoder(GstElement *source);

/// What an error message of a graph means to a person.
/// @param missingDecoders  what GStreamer has said to be missing, for people: "H.264 decoder"; may be empty.
GraphError describeError(GstMessage *message, const std::string &missingDecoders);

} // namespace skyflare
