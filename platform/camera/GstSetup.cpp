#include "platform/camera/GstSetup.h"

#include <gst/video/video.h>

namespace skyflare {

Result<> initialiseGStreamer()
{
    static const Result<> outcome = []() -> Result<> {
        GError *error = nullptr;
        if (gst_init_check(nullptr, nullptr, &error))
            return {};
        const GLibError held(error);
        return Error{"GStreamer", held ? held->code : 0,
                     std::string("GStreamer does not start: ") + (held ? held->message : "no reason given")};
    }();
    return outcome;
}

Result<Element> makeGstElement(const char *factory)
{
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    GstElement *element = gst_element_factory_make(factory, nullptr);
    if (!element)
        return Error{"GStreamer", 0, std::string("GStreamer's part \"") + factory + "\" is not installed"};
    gst_object_ref_sink(element);
    return Element(element);
}

Pipeline makePipeline()
{
    GstElement *pipeline = gst_pipeline_new(nullptr);
    gst_object_ref_sink(pipeline);
    return Pipeline(pipeline);
}

void takePaddedPictures(GstElement *sink)
{
    const auto answer = +[](GstPad *, GstPadProbeInfo *info, gpointer) {
        GstQuery *query = GST_PAD_PROBE_INFO_QUERY(info);
        if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION)
            return GST_PAD_PROBE_OK;
        gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
        gst_query_add_allocation_meta(query, GST_VIDEO_CROP_META_API_TYPE, nullptr);
        return GST_PAD_PROBE_HANDLED;
    };
    const Pad pad(gst_element_get_static_pad(sink, "sink"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, answer, nullptr, nullptr);
}

} // namespace skyflare
