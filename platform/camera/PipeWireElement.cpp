#include "platform/camera/PipeWireElement.h"

#include "platform/camera/GstSetup.h"

namespace skyflare {

namespace {

void addPad(GstElement *bin, GstPad *inner)
{
    GstPad *pad = gst_ghost_pad_new("src", inner);
    gst_pad_set_active(pad, TRUE);
    const auto copyEvent = +[](GstPad *, GstEvent **event, gpointer to) {
        gst_pad_store_sticky_event(static_cast<GstPad *>(to), *event);
        return gboolean(TRUE);
    };
    gst_pad_sticky_events_foreach(inner, copyEvent, pad); // whoever links it may ask what has come
    gst_element_add_pad(bin, pad);
}

/// Whoever is linked wants to agree on a format once more: then the camera would begin anew, and some do not.
void addPadWithItsCaps(GstElement *bin, GstPad *inner)
{
    const auto eventComes = +[](GstPad *pad, GstPadProbeInfo *info, gpointer outer) {
        const auto type = GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info));
        auto *const holder = static_cast<GstElement *>(outer);
        if (type == GST_EVENT_CAPS && holder->numsrcpads == 0)
            addPad(holder, pad);
        return type == GST_EVENT_RECONFIGURE ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
    };
    gst_pad_add_probe(inner, GST_PAD_PROBE_TYPE_EVENT_BOTH, eventComes, bin, nullptr);
}

} // namespace

void setUpPipeWire(GstElement *pipewireSource)
{
    const Structure properties(gst_structure_new("props", "media.type", G_TYPE_STRING, "Video",
                                                 "media.category", G_TYPE_STRING, "Capture", "media.role",
                                                 G_TYPE_STRING, "Camera", nullptr));
    g_object_set(pipewireSource, "stream-properties", properties.get(), "do-timestamp", TRUE, "always-copy",
                 TRUE, nullptr);
}

Result<Element> heldToFormat(Element source, const GstCaps *format, PadComes padComes)
{
    const auto filter = makeGstElement("capsfilter");
    if (!filter)
        return filter.error();
    g_object_set(filter->get(), "caps", format, nullptr);
    Element bin(GST_ELEMENT(gst_object_ref_sink(gst_bin_new(nullptr))));
    gst_bin_add_many(GST_BIN(bin.get()), source.get(), filter->get(), nullptr);
    if (!gst_element_link(source.get(), filter->get()))
        return Error{"camera", 0, "its pictures are of a kind that cannot be read"};
    const Pad pad(gst_element_get_static_pad(filter->get(), "src"));
    (padComes == PadComes::AtOnce ? &addPad : &addPadWithItsCaps)(bin.get(), pad.get());
    return bin;
}

} // namespace skyflare
