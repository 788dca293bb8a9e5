// A camera for tests: a node of PipeWire's, until it is killed or PipeWire ends.
//
//     pipewire_camera NAME FORMAT WIDTH HEIGHT RATE FILE
//
// FORMAT is RGBx or I420: pictures of one colour, red 32, and white for three in every forty; JPEG: the
// pictures are FILE; H264: no picture ever; or Refused: RGBx as long as nobody wants to have it. Prints
// "ready" when the camera can be found.
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr int picturesBetweenFlashes = 40;
constexpr int picturesOfFlash = 3;

struct Camera {
    std::string_view format;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t rate = 0;
    std::vector<std::uint8_t> dark;
    std::vector<std::uint8_t> white;

    pw_main_loop *loop = nullptr;
    pw_stream *stream = nullptr;
    spa_source *timer = nullptr;
    bool isReady = false;
    int pictures = 0;
};

constexpr std::size_t roundedUp(std::size_t number, std::size_t step)
{
    return (number + step - 1) / step * step;
}

void append(std::vector<std::uint8_t> &bytes, std::size_t count, std::initializer_list<std::uint8_t> pattern)
{
    for (std::size_t i = 0; i < count; ++i)
        bytes.insert(bytes.end(), pattern);
}

/// Odd sizes are rounded up as GStreamer has it.
void paint(Camera &camera, const char *file)
{
    const std::size_t pixels = roundedUp(camera.width, 4) * roundedUp(camera.height, 2);
    const std::size_t chroma =
        roundedUp(roundedUp(camera.width, 2) / 2, 4) * (roundedUp(camera.height, 2) / 2);
    if (*file) {
        std::ifstream stream(file, std::ios::binary);
        camera.dark.assign(std::istreambuf_iterator<char>(stream), {});
        camera.white = camera.dark;
    } else if (camera.format == "I420") {
        append(camera.dark, pixels, {66}); // red 32, green 64, blue 96 by BT.601, limited range
        append(camera.dark, chroma, {147});
        append(camera.dark, chroma, {112});
        append(camera.white, pixels, {235});
        append(camera.white, 2 * chroma, {128});
    } else {
        append(camera.dark, pixels, {32, 64, 96, 255});
        append(camera.white, pixels, {255, 255, 255, 255});
    }
}

const spa_pod *offeredFormat(const Camera &camera, spa_pod_builder &builder)
{
    const spa_rectangle size{camera.width, camera.height};
    const spa_fraction rate{camera.rate, 1};
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    const bool isJpeg = camera.format == "JPEG";
    const bool isCoded = isJpeg || camera.format == "H264";
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(isJpeg    ? SPA_MEDIA_SUBTYPE_mjpg
                                   : isCoded ? SPA_MEDIA_SUBTYPE_h264
                                             : SPA_MEDIA_SUBTYPE_raw),
                        0);
    if (!isCoded)
        spa_pod_builder_add(
            &builder, SPA_FORMAT_VIDEO_format,
            SPA_POD_Id(camera.format == "I420" ? SPA_VIDEO_FORMAT_I420 : SPA_VIDEO_FORMAT_RGBx), 0);
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), SPA_FORMAT_VIDEO_framerate,
                        SPA_POD_Fraction(&rate), 0);
    return static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame));
}

void takeFormat(void *data, std::uint32_t id, const spa_pod *param)
{
    auto &camera = *static_cast<Camera *>(data);
    if (!param || id != SPA_PARAM_Format)
        return;
    if (camera.format == "Refused") {
        pw_stream_set_error(camera.stream, -EINVAL, "this format was never meant");
        return;
    }
    std::uint8_t space[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(space, sizeof space);
    const auto *buffers = static_cast<const spa_pod *>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(8, 2, 16), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
        SPA_POD_Int(int(camera.dark.size())), SPA_PARAM_BUFFERS_stride,
        SPA_POD_Int(int(camera.dark.size() / camera.height))));
    pw_stream_update_params(camera.stream, &buffers, 1);
}

void followState(void *data, pw_stream_state, pw_stream_state state, const char *)
{
    auto &camera = *static_cast<Camera *>(data);
    timespec interval{0, state == PW_STREAM_STATE_STREAMING ? long{1'000'000'000} / camera.rate : 0};
    pw_loop_update_timer(pw_main_loop_get_loop(camera.loop), camera.timer, &interval, &interval, false);
    if (state == PW_STREAM_STATE_PAUSED && !std::exchange(camera.isReady, true)) {
        std::puts("ready");
        std::fflush(stdout);
    }
    if (state == PW_STREAM_STATE_UNCONNECTED && camera.isReady)
        pw_main_loop_quit(camera.loop);
}

void showPicture(void *data)
{
    auto &camera = *static_cast<Camera *>(data);
    pw_buffer *buffer = pw_stream_dequeue_buffer(camera.stream);
    if (!buffer)
        return;
    const int turn = camera.pictures++ % picturesBetweenFlashes;
    const auto &picture = turn < picturesBetweenFlashes - picturesOfFlash ? camera.dark : camera.white;
    spa_data &plane = buffer->buffer->datas[0];
    const auto size = std::min<std::size_t>(picture.size(), plane.data ? plane.maxsize : 0);
    std::memcpy(plane.data, picture.data(), size);
    plane.chunk->offset = 0;
    plane.chunk->size = static_cast<std::uint32_t>(size);
    plane.chunk->stride = static_cast<std::int32_t>(picture.size() / camera.height);
    pw_stream_queue_buffer(camera.stream, buffer);
}

int run(Camera &camera, const char *name)
{
    camera.loop = pw_main_loop_new(nullptr);
    pw_loop *loop = pw_main_loop_get_loop(camera.loop);
    const auto nextPicture = [](void *data, std::uint64_t) {
        pw_stream_trigger_process(static_cast<Camera *>(data)->stream);
    };
    camera.timer = pw_loop_add_timer(loop, nextPicture, &camera);
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.state_changed = followState;
    events.param_changed = takeFormat;
    events.process = showPicture;
    camera.stream = pw_stream_new_simple(loop, name,
                                         pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source",
                                                           PW_KEY_MEDIA_ROLE, "Camera", PW_KEY_NODE_NAME,
                                                           name, PW_KEY_NODE_DESCRIPTION, name, nullptr),
                                         &events, &camera);
    std::uint8_t space[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(space, sizeof space);
    const spa_pod *format = offeredFormat(camera, builder);
    const auto flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS);
    if (pw_stream_connect(camera.stream, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &format, 1) != 0)
        return 1;
    pw_main_loop_run(camera.loop);
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    pw_init(nullptr, nullptr);
    if (argc != 7)
        return 2;
    const auto number = [&](int at) {
        return static_cast<std::uint32_t>(std::strtoul(argv[at], nullptr, 10));
    };
    Camera camera;
    camera.format = argv[2];
    camera.width = number(3);
    camera.height = number(4);
    camera.rate = number(5);
    paint(camera, argv[6]);
    return run(camera, argv[1]);
}
