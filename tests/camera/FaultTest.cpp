#include "platform/camera/FramePlanes.h"
#include "platform/camera/FrameReader.h"
#include "platform/camera/GstErrors.h"
#include "platform/camera/GstSetup.h"
#include "tests/camera/CameraRig.h"

#include <doctest/doctest.h>
#include <gst/video/video.h>

#include <latch>

namespace skyflare {

namespace {

/// Bytes that count up from 0.
GstBuffer *countingBuffer(std::size_t size)
{
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
    for (std::size_t at = 0; at < size; ++at)
        gst_buffer_memset(buffer, at, static_cast<guint8>(at), 1);
    return buffer;
}

VideoFrame readOne(const char *format, GstBuffer *buffer)
{
    const Caps caps(gst_caps_from_string(format));
    VideoFrame frame = FrameReader().read(Sample(gst_sample_new(buffer, caps.get(), nullptr, nullptr)));
    gst_buffer_unref(buffer);
    return frame;
}

/// 5 rows of 7 pixels in 100 bytes: NV12 has a second plane, with rows of 12 bytes.
GstBuffer *frameBuffer(GstVideoFormat format, gsize first, gint stride, gsize second)
{
    GstBuffer *buffer = countingBuffer(100);
    gsize offsets[4] = {first, second};
    gint strides[4] = {stride, 12};
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, format, 7, 5,
                                   format == GST_VIDEO_FORMAT_NV12 ? 2 : 1, offsets, strides);
    return buffer;
}

/// The bytes of a frame without padding.
std::vector<int> bytesOf(const VideoFrame &frame)
{
    const VideoFrame copy = copied(frame);
    const auto &bytes = *static_cast<const Bytes *>(copy.owner.get());
    return {bytes.begin(), bytes.end()};
}

} // namespace

TEST_CASE("of a frame with rows and a region of its own exactly its pixels are read; else it has no picture")
{
    REQUIRE(initialiseGStreamer());
    const char *nv12 = "video/x-raw,format=NV12,width=7,height=5";
    const char *gray = "video/x-raw,format=GRAY8,width=2,height=5";
    GstBuffer *buffer = frameBuffer(GST_VIDEO_FORMAT_NV12, 4, 10, 60);
    GstVideoCropMeta *crop = gst_buffer_add_video_crop_meta(buffer);
    // From the middle of a chroma sample to beyond the frame.
    std::tie(crop->x, crop->y, crop->width, crop->height) = std::tuple(3, 1, 100, 3);
    CHECK(bytesOf(readOne(nv12, buffer)) == std::vector{28, 29, 30, 38, 39, 40, 76, 77, 78, 79});

    const VideoFrame upsideDown = readOne(gray, frameBuffer(GST_VIDEO_FORMAT_GRAY8, 40, -10, 0));
    CHECK(upsideDown.planes[0].stride == 2);
    CHECK(bytesOf(upsideDown) == std::vector{40, 41, 30, 31, 20, 21, 10, 11, 0, 1});

    CHECK(readOne(nv12, frameBuffer(GST_VIDEO_FORMAT_NV12, 4, 10, 68)).hasImageBuffer());
    CHECK_FALSE(readOne(nv12, frameBuffer(GST_VIDEO_FORMAT_NV12, 4, 10, 69)).hasImageBuffer());
    CHECK_FALSE(readOne("video/x-raw,format=GRAY8,width=8,height=4", countingBuffer(31)).hasImageBuffer());
    CHECK_FALSE(readOne(gray, countingBuffer(0)).hasImageBuffer());
    buffer = countingBuffer(100);
    GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_CORRUPTED);
    CHECK_FALSE(readOne(gray, buffer).hasImageBuffer());
    CHECK_FALSE(readOne("video/x-bayer,format=bggr,width=8,height=4", countingBuffer(32)).hasImageBuffer());
}

TEST_CASE("a stream may change its size and format in mid-run; into what nobody reads it ends with words")
{
    CameraRig rig(std::make_shared<TestCamera>(
        "concat name=c videotestsrc num-buffers=2 ! video/x-raw,format=NV12,width=64,height=48 ! c. "
        "videotestsrc num-buffers=2 ! video/x-raw,format=GRAY16_LE,width=33,height=21 ! c. "
        "videotestsrc num-buffers=2 ! video/x-raw,width=20,height=10 ! jpegenc ! c. c.",
        Pacing::LockStep));
    std::string sizes;
    rig.frames->seen = [&](const VideoFrame &frame) { sizes += std::to_string(frame.width) + ' '; };
    REQUIRE(rig.runToEnd());
    CHECK(sizes == "64 64 33 33 ");
    CHECK(
        rig.events->lineOf(Kind::Failed).starts_with("Test camera: its pictures are of a kind that cannot"));
}

TEST_CASE("a camera that hangs stops no start, stop or photo for good, and keeps its device")
{
    struct NeverOpens final : TestCamera {
        using TestCamera::TestCamera;
        std::latch *answers = nullptr;
        Result<Element> makeElement() const override { return answers->wait(), TestCamera::makeElement(); }
    };
    REQUIRE(initialiseGStreamer());
    std::latch answers(1);
    const auto neverOpens = std::make_shared<NeverOpens>(liveCamera, Pacing::Live);
    neverOpens->answers = &answers;
    CameraRig opening(neverOpens);
    opening.start();

    std::latch hangs(1);
    int frames = 0;
    const auto passing = [&](GstPadProbeInfo *info) {
        if (isFrame(info) && ++frames == 2) {
            hangs.count_down();
            answers.wait();
        }
        return GST_PAD_PROBE_OK;
    };
    const auto camera = std::make_shared<TestCamera>(liveCamera, Pacing::Live, passing);
    camera->device = "/dev/video-test";
    CameraRig stopping(camera);
    const auto startAgain = [&] {
        stopping.makeSession();
        stopping.start();
    };
    startAgain();
    REQUIRE(stopping.events->waitFor(Kind::Started));
    hangs.wait();
    camera->remove();
    REQUIRE(stopping.events->waitFor(Kind::Lost));
    CHECK(stopping.events->at(1).message == "Test camera is gone: it was unplugged or switched off");
    const auto photos = std::make_shared<PhotoLog>();
    opening.photoOutput->capturePhoto({}, photos); // and waits for the first frame
    startAgain();
    REQUIRE(stopping.events->waitFor(Kind::Stopped, 2)); // the first is left behind
    CHECK(stopping.events->lineOf(Kind::Failed).starts_with("Test camera is still in use by the run before"));
    CHECK(stopping.events->at(4).message.empty()); // which had nothing to take down

    REQUIRE(photos->waitFor(1));
    REQUIRE(opening.events->waitFor(Kind::Stopped));
    CHECK(opening.events->at(0).message == "Test camera gives no pictures");
    CHECK(opening.events->at(1).message == "Test camera does not stop; it is left behind");
    startAgain();
    answers.count_down();
    REQUIRE(stopping.events->waitFor(Kind::Started, 2));
}

TEST_CASE("what the system says of a camera goes before the code of the error")
{
    const auto source = makeGstElement("videotestsrc");
    const GLibError error(g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ_WRITE, "No."));
    const Message message(
        gst_message_new_error(GST_OBJECT(source->get()), error.get(), "system error: Permission denied"));
    CHECK(describeError(message.get(), "").line ==
          "it may not be opened: add your user to the group \"video\" and log in again");
}

} // namespace skyflare
