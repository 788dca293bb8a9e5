#include "platform/camera/CaptureGraph.h"

#include "platform/camera/GstSetup.h"

#include <gst/app/gstappsink.h>
#include <gst/pbutils/missing-plugins.h>

namespace skyflare {

namespace {

/// What VideoFrame knows.
constexpr const char *nativeFormats =
    "video/x-raw, format = (string) { NV12, I420, YUY2, UYVY, RGBx, BGRx, RGB, GRAY8 }; image/jpeg";

/// So many pictures of a film are decoded ahead: each has its memory.
constexpr guint picturesAhead = 3;

/// What stands between a source and the rest of the graph, if anything.
const char *pacerFor(Pacing pacing)
{
    switch (pacing) {
    case Pacing::RealTime:
        return "clocksync";
    case Pacing::LockStep:
        return "queue"; // decodes the next pictures while one is dealt with
    case Pacing::Live:
        break;
    }
    return nullptr;
}

bool givesRawPictures(GstPad *pad)
{
    const Caps agreed(gst_pad_get_current_caps(pad));
    const Caps caps(agreed ? gst_caps_ref(agreed.get()) : gst_pad_query_caps(pad, nullptr));
    const Caps raw(gst_caps_new_empty_simple("video/x-raw"));
    return gst_caps_can_intersect(caps.get(), raw.get());
}

} // namespace

Result<std::unique_ptr<CaptureGraph>> CaptureGraph::build(const CameraSource &source, GraphObserver &observer)
{
    auto graph = std::make_unique<CaptureGraph>(observer);
    if (const auto added = graph->addElements(source.pacing()); !added)
        return added.error();
    if (const auto added = graph->addSource(source); !added)
        return added.error();
    return graph;
}

CaptureGraph::~CaptureGraph()
{
    // Its threads call into this object until they have come home.
    pipeline_.reset();
}

bool CaptureGraph::play()
{
    return gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

Result<> CaptureGraph::addElements(Pacing pacing)
{
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    pipeline_ = makePipeline();
    watchBus();
    for (const auto &[element, factory] : {std::pair{&sink_, "appsink"}, std::pair{&pacer_, pacerFor(pacing)},
                                           std::pair{&converter_, "videoconvert"}}) {
        if (!factory)
            continue;
        const auto added = add(factory);
        if (!added)
            return added.error();
        *element = *added;
    }
    if (pacing == Pacing::LockStep)
        g_object_set(pacer_, "max-size-buffers", picturesAhead, "max-size-bytes", 0U, "max-size-time",
                     guint64{0}, nullptr);
    setUpSink(pacing);
    return {};
}

Result<GstElement *> CaptureGraph::add(const char *factory)
{
    const auto element = makeGstElement(factory);
    if (!element)
        return element.error();
    gst_bin_add(GST_BIN(pipeline_.get()), element->get());
    return element->get();
}

void CaptureGraph::setUpSink(Pacing pacing)
{
    const Caps caps(gst_caps_from_string(nativeFormats));
    // newSample() takes each sample at once, so it is FrameDelivery that drops what is late, and counts it.
    g_object_set(sink_, "caps", caps.get(), "max-buffers", 1U, "drop", gboolean(pacing != Pacing::LockStep),
                 "sync", FALSE, "async", FALSE, "enable-last-sample", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = [](GstAppSink *sink, gpointer self) {
        return newSample(GST_ELEMENT(sink), *static_cast<CaptureGraph *>(self));
    };
    callbacks.eos = [](GstAppSink *, gpointer self) {
        static_cast<CaptureGraph *>(self)->observer_.streamEnded();
    };
    gst_app_sink_set_callbacks(GST_APP_SINK(sink_), &callbacks, this, nullptr);
    takePaddedPictures(sink_);
}

void CaptureGraph::watchBus()
{
    const Bus bus(gst_element_get_bus(pipeline_.get()));
    const GstBusSyncHandler onMessage = [](GstBus *, GstMessage *message, gpointer self) {
        const Message held(message);
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
            static_cast<CaptureGraph *>(self)->noteError(message);
        else if (gst_is_missing_plugin_message(message))
            static_cast<CaptureGraph *>(self)->noteMissing(message);
        return GST_BUS_DROP;
    };
    gst_bus_set_sync_handler(bus.get(), onMessage, this, nullptr);
}

Result<> CaptureGraph::addSource(const CameraSource &source)
{
    const auto element = source.makeElement();
    if (!element)
        return element.error();
    // A source fresh from its factory belongs to nobody yet.
    if (g_object_is_floating(element->get()))
        gst_object_ref_sink(element->get());
    gst_bin_add(GST_BIN(pipeline_.get()), element->get());
    const Pad pad(gst_element_get_static_pad(element->get(), "src"));
    if (pad)
        return link(pad.get()) ? Result<>()
                               : Error{"camera", 0, "its pictures are of a kind that cannot be read"};
    const auto padAdded = +[](GstElement *, GstPad *added, gpointer self) {
        auto &graph = *static_cast<CaptureGraph *>(self);
        if (!graph.isLinked_ && !graph.link(added))
            graph.observer_.errorReported({"its pictures are of a kind that cannot be read"});
    };
    g_signal_connect(element->get(), "pad-added", G_CALLBACK(padAdded), this);
    return {};
}

bool CaptureGraph::link(GstPad *sourcePad)
{
    GstElement *next = givesRawPictures(sourcePad) ? converter_ : sink_;
    bool isLinked = next == sink_ || gst_element_link(next, sink_);
    if (pacer_) {
        isLinked = isLinked && gst_element_link(pacer_, next);
        next = pacer_;
    }
    const Pad pad(gst_element_get_static_pad(next, "sink"));
    isLinked_ = isLinked && gst_pad_link(sourcePad, pad.get()) == GST_PAD_LINK_OK;
    return isLinked_;
}

void CaptureGraph::noteMissing(GstMessage *message)
{
    const GLibText what(gst_missing_plugin_message_get_description(message));
    const std::scoped_lock lock(mutex_);
    missingDecoders_ += (missingDecoders_.empty() ? "" : ", ") + std::string(what.get());
}

void CaptureGraph::noteError(GstMessage *message)
{
    std::string missing;
    {
        const std::scoped_lock lock(mutex_);
        missing = missingDecoders_;
    }
    GraphError error = describeError(message, missing);
    error.isAfterOpening = isLinked_;
    observer_.errorReported(error);
}

GstFlowReturn CaptureGraph::newSample(GstElement *sink, CaptureGraph &self)
{
    Sample sample(gst_app_sink_try_pull_sample(GST_APP_SINK(sink), 0));
    if (!sample)
        return GST_FLOW_OK;
    return self.observer_.sampleArrived(std::move(sample)) ? GST_FLOW_OK : GST_FLOW_EOS;
}

} // namespace skyflare
