#pragma once

#include "platform/base/Handle.h"

#include <gst/gst.h>

namespace skyflare {

struct SampleRelease {
    void operator()(GstSample *sample) const { gst_sample_unref(sample); }
};
struct CapsRelease {
    void operator()(GstCaps *caps) const { gst_caps_unref(caps); }
};
struct MessageRelease {
    void operator()(GstMessage *message) const { gst_message_unref(message); }
};
struct StructureRelease {
    void operator()(GstStructure *structure) const { gst_structure_free(structure); }
};
/// Stops the pipeline before letting go of it. May wait for its streaming threads.
struct PipelineRelease {
    void operator()(GstElement *pipeline) const
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
    }
};

using Element = Handle<GstElement, &gst_object_unref>;
using Pad = Handle<GstPad, &gst_object_unref>;
using Bus = Handle<GstBus, &gst_object_unref>;
using Sample = std::unique_ptr<GstSample, SampleRelease>;
using Caps = std::unique_ptr<GstCaps, CapsRelease>;
using Structure = std::unique_ptr<GstStructure, StructureRelease>;
using Message = std::unique_ptr<GstMessage, MessageRelease>;
using Pipeline = std::unique_ptr<GstElement, PipelineRelease>;
using GLibError = Handle<GError, &g_error_free>;
using GLibText = Handle<gchar, &g_free>;

} // namespace skyflare
