#include "bench/CameraAlone.h"

#include "bench/Machine.h"
#include "platform/camera/GstSetup.h"

#include <chrono>
#include <thread>

namespace skyflare::bench {

std::optional<double> shareOfCameraAlone(const CameraSource &camera, double settlingSeconds,
                                         double watchedSeconds)
{
    auto source = camera.makeElement();
    auto sink = makeGstElement("fakesink");
    if (!source || !sink)
        return {};
    const Pipeline pipeline = makePipeline();
    g_object_set(sink->get(), "sync", FALSE, "async", FALSE, nullptr);
    gst_bin_add_many(GST_BIN(pipeline.get()), source->get(), sink->get(), nullptr);
    if (!gst_element_link(source->get(), sink->get()) ||
        gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return {};
    std::this_thread::sleep_for(std::chrono::duration<double>(settlingSeconds));
    const double processor = processorSeconds();
    const double time = now();
    std::this_thread::sleep_for(std::chrono::duration<double>(watchedSeconds));
    return (processorSeconds() - processor) / (now() - time);
}

} // namespace skyflare::bench
