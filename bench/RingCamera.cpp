#include "bench/RingCamera.h"

#include "platform/camera/GstSetup.h"
#include "platform/camera/PushSource.h"
#include "platform/camera/sky/SimulatedSky.h"

#include <algorithm>

namespace skyflare::bench {

namespace {

struct RingState {
    static constexpr const char *typeName = "SkyflareRingElement";
    static constexpr const char *longName = "Ring";
    static constexpr const char *description = "Pictures over and over";
    static constexpr const char *caps = "video/x-raw, format = (string) { I420, NV12 }";
    static void fillClass(GstPushSrcClass *source);

    std::shared_ptr<const Ring> ring;
    GstVideoInfo info{};
    std::uint64_t next = 0; ///< number of the frame to give next
};

using RingElement = PushSource<RingState>;

GstFlowReturn create(GstPushSrc *element, GstBuffer **buffer)
{
    RingState &state = RingElement::stateOf(element);
    const Ring &ring = *state.ring;
    const Bytes &picture = ring.pictures[ring.order[state.next % ring.order.size()]];
    auto keepsRing = std::make_unique<std::shared_ptr<const Ring>>(state.ring);
    *buffer = gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY,
                                          const_cast<std::uint8_t *>(picture.data()), picture.size(), 0,
                                          picture.size(), keepsRing.release(), [](gpointer kept) {
                                              const std::unique_ptr<std::shared_ptr<const Ring>> last(
                                                  static_cast<std::shared_ptr<const Ring> *>(kept));
                                          });
    const auto seconds = [&ring](std::uint64_t frame) {
        return static_cast<GstClockTime>(static_cast<double>(frame) / ring.framesPerSecond * GST_SECOND);
    };
    GST_BUFFER_PTS(*buffer) = seconds(state.next);
    GST_BUFFER_DURATION(*buffer) = seconds(state.next + 1) - seconds(state.next);
    ++state.next;
    return GST_FLOW_OK;
}

/// A live source waits for these times before it gives a frame.
void getTimes(GstBaseSrc *, GstBuffer *buffer, GstClockTime *start, GstClockTime *end)
{
    *start = GST_BUFFER_PTS(buffer);
    *end = *start + GST_BUFFER_DURATION(buffer);
}

void RingState::fillClass(GstPushSrcClass *source)
{
    source->create = &create;
    source->parent_class.get_times = &getTimes;
}

/// I420 has Cb and Cr one after the other, NV12 side by side.
Bytes asNv12(const Bytes &i420, std::size_t lumaSize)
{
    Bytes nv12(i420.size());
    std::copy_n(i420.begin(), lumaSize, nv12.begin());
    const std::size_t chromaSize = lumaSize / 4;
    for (std::size_t pixel = 0; pixel < chromaSize; ++pixel) {
        nv12[lumaSize + 2 * pixel] = i420[lumaSize + pixel];
        nv12[lumaSize + 2 * pixel + 1] = i420[lumaSize + chromaSize + pixel];
    }
    return nv12;
}

/// Lifts the luma by a sixth of its range: several times what a trigger needs.
Bytes brighter(Bytes picture, std::size_t lumaSize)
{
    for (std::size_t pixel = 0; pixel < lumaSize; ++pixel)
        picture[pixel] = static_cast<std::uint8_t>(std::min(picture[pixel] + 36, 235));
    return picture;
}

} // namespace

std::size_t Ring::bytes() const
{
    std::size_t sum = 0;
    for (const Bytes &picture : pictures)
        sum += picture.size();
    return sum;
}

Ring drawRing(Ring::Format format, int width, int height, int count, Flash flash)
{
    Ring ring{.format = format, .width = width, .height = height, .pictures = {}, .order = {}};
    SimulatedSky sky({.width = width, .height = height, .seed = 3});
    const auto lumaSize = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    for (int number = 0; number < count; ++number) {
        Bytes picture(lumaSize * 3 / 2);
        std::uint8_t *const luma = picture.data();
        sky.render(number, {width, height, luma, luma + lumaSize, luma + lumaSize * 5 / 4, width, width / 2});
        if (format == Ring::Format::NV12)
            picture = asNv12(picture, lumaSize);
        ring.pictures.push_back(picture);
        if (flash == Flash::AfterEach)
            ring.pictures.push_back(brighter(std::move(picture), lumaSize));
    }
    for (std::size_t index = 0; index < ring.pictures.size(); ++index)
        ring.order.push_back(index);
    return ring;
}

Result<Element> RingCamera::makeElement() const
{
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    Element element = RingElement::make();
    gst_base_src_set_live(GST_BASE_SRC(element.get()), TRUE);
    RingState &state = RingElement::stateOf(element.get());
    state.ring = ring_;
    gst_video_info_set_format(
        &state.info, ring_->format == Ring::Format::NV12 ? GST_VIDEO_FORMAT_NV12 : GST_VIDEO_FORMAT_I420,
        static_cast<guint>(ring_->width), static_cast<guint>(ring_->height));
    gst_video_colorimetry_from_string(&state.info.colorimetry, GST_VIDEO_COLORIMETRY_BT709);
    gst_util_double_to_fraction(ring_->framesPerSecond, &state.info.fps_n, &state.info.fps_d);
    return element;
}

} // namespace skyflare::bench
