#include "platform/camera/SkyElement.h"

#include "platform/camera/PushSource.h"
#include "platform/camera/sky/SimulatedSky.h"

namespace skyflare {

namespace {

using ClockHandle = Handle<GstClock, &gst_object_unref>;

struct SkyState {
    static constexpr const char *typeName = "SkyflareSkyElement";
    static constexpr const char *longName = "Simulated sky";
    static constexpr const char *description = "Draws a night with fireworks";
    static constexpr const char *caps = "video/x-raw, format = (string) I420";
    static void fillClass(GstPushSrcClass *source);

    SkyParameters parameters;
    GstVideoInfo info{};
    std::unique_ptr<SimulatedSky> sky; ///< while the element is started
    std::int64_t next = 0;             ///< number of the frame to draw next
};

using SkyElement = PushSource<SkyState>;

/// How far the graph's clock is past its start; nothing unless it plays.
GstClockTime runningTime(GstElement *element)
{
    GST_OBJECT_LOCK(element);
    const bool plays = GST_STATE(element) == GST_STATE_PLAYING;
    const auto base = static_cast<GstClockTime>(GST_ELEMENT_CAST(element)->base_time);
    GST_OBJECT_UNLOCK(element);
    const ClockHandle clock(gst_element_get_clock(element));
    if (!plays || !clock)
        return GST_CLOCK_TIME_NONE;
    const GstClockTime now = gst_clock_get_time(clock.get());
    return now > base ? now - base : 0;
}

GstClockTime timeOf(std::int64_t number, const GstVideoInfo &info)
{
    return gst_util_uint64_scale(static_cast<guint64>(number), GST_SECOND * static_cast<guint64>(info.fps_d),
                                 static_cast<guint64>(info.fps_n));
}

/// Leaves out the frames whose time is over; never the first, which is where the film time of a run begins.
void skipWhatIsLate(GstElement *element, SkyState &state)
{
    if (state.next == 0)
        return;
    const GstClockTime now = runningTime(element);
    if (!GST_CLOCK_TIME_IS_VALID(now) || now <= timeOf(state.next + 1, state.info))
        return;
    state.next = static_cast<std::int64_t>(gst_util_uint64_scale(
        now, static_cast<guint64>(state.info.fps_n), GST_SECOND * static_cast<guint64>(state.info.fps_d)));
}

GstFlowReturn fill(GstPushSrc *element, GstBuffer *buffer)
{
    SkyState &state = SkyElement::stateOf(element);
    skipWhatIsLate(GST_ELEMENT_CAST(element), state);
    GstVideoFrame mapped;
    if (gst_video_frame_map(&mapped, &state.info, buffer, GST_MAP_WRITE) == FALSE) {
        GST_ELEMENT_ERROR(element, RESOURCE, WRITE, ("The simulated sky has no memory to draw in"),
                          (nullptr));
        return GST_FLOW_ERROR;
    }
    const auto plane = [&](guint index) {
        return static_cast<std::uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, index));
    };
    state.sky->render(state.next,
                      {state.parameters.width, state.parameters.height, plane(0), plane(1), plane(2),
                       GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0), GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 1)});
    gst_video_frame_unmap(&mapped);
    GST_BUFFER_PTS(buffer) = timeOf(state.next, state.info);
    GST_BUFFER_DURATION(buffer) = timeOf(state.next + 1, state.info) - GST_BUFFER_PTS(buffer);
    GST_BUFFER_OFFSET(buffer) = static_cast<guint64>(state.next);
    ++state.next;
    return GST_FLOW_OK;
}

gboolean start(GstBaseSrc *element)
{
    SkyState &state = SkyElement::stateOf(element);
    state.next = 0;
    state.sky = std::make_unique<SimulatedSky>(state.parameters);
    gst_base_src_set_blocksize(element, static_cast<guint>(state.info.size));
    return TRUE;
}

gboolean stop(GstBaseSrc *element)
{
    SkyElement::stateOf(element).sky.reset();
    return TRUE;
}

/// Frames come from a pool, so that a running sky asks for no new memory.
gboolean decideAllocation(GstBaseSrc *element, GstQuery *query)
{
    const auto needed = static_cast<guint>(SkyElement::stateOf(element).info.size);
    if (gst_query_get_n_allocation_pools(query) == 0)
        gst_query_add_allocation_pool(query, nullptr, needed, 2, 0);
    return SkyElement::parentClass()->decide_allocation(element, query);
}

void SkyState::fillClass(GstPushSrcClass *source)
{
    source->fill = &fill;
    source->parent_class.start = &start;
    source->parent_class.stop = &stop;
    source->parent_class.decide_allocation = &decideAllocation;
}

} // namespace

Element makeSkyElement(const SkyParameters &parameters)
{
    Element element = SkyElement::make();
    SkyState &state = SkyElement::stateOf(element.get());
    state.parameters = parameters;
    gst_video_info_set_format(&state.info, GST_VIDEO_FORMAT_I420, static_cast<guint>(parameters.width),
                              static_cast<guint>(parameters.height));
    gst_video_colorimetry_from_string(&state.info.colorimetry, GST_VIDEO_COLORIMETRY_BT709);
    state.info.chroma_site = GST_VIDEO_CHROMA_SITE_JPEG;
    gst_util_double_to_fraction(parameters.framesPerSecond, &state.info.fps_n, &state.info.fps_d);
    return element;
}

} // namespace skyflare
