#include "platform/camera/SimulatedSkySource.h"

#include "platform/base/Bytes.h"
#include "platform/camera/sky/SimulatedSky.h"

#include <doctest/doctest.h>
#include <gst/video/video.h>

#include <condition_variable>
#include <cstring>
#include <mutex>

namespace skyflare {

namespace {

/// A source in a graph of its own, with nothing that would hold its frames back.
struct SkyRun {
    explicit SkyRun(const SimulatedSkySource &source)
    {
        auto element = source.makeElement();
        REQUIRE(element);
        pipeline.reset(gst_pipeline_new(nullptr));
        gst_object_ref_sink(pipeline.get());
        GstElement *sink = gst_element_factory_make("fakesink", nullptr);
        gst_bin_add_many(GST_BIN(pipeline.get()), element->get(), sink, nullptr);
        REQUIRE(gst_element_link(element->get(), sink));
        pad.reset(gst_element_get_static_pad(sink, "sink"));
        const auto probe = [](GstPad *, GstPadProbeInfo *info, gpointer self) {
            static_cast<SkyRun *>(self)->note(GST_PAD_PROBE_INFO_BUFFER(info));
            return GST_PAD_PROBE_OK;
        };
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, probe, this, nullptr);
    }

    struct Frame {
        GstClockTime time, duration;
    };
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Frame> frames;
    Bytes last;
    Pad pad;
    Pipeline pipeline; ///< ends first: its thread writes the rest

    void note(GstBuffer *buffer)
    {
        const std::scoped_lock lock(mutex);
        frames.push_back({GST_BUFFER_PTS(buffer), GST_BUFFER_DURATION(buffer)});
        last.resize(gst_buffer_get_size(buffer));
        gst_buffer_extract(buffer, 0, last.data(), last.size());
        changed.notify_all();
    }
    void setState(GstState state) { gst_element_set_state(pipeline.get(), state); }
    template <typename Condition> bool waitUntil(Condition isMet)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(60), isMet);
    }
};

} // namespace

TEST_CASE("what a user writes becomes a sky")
{
    struct Row {
        const char *text;
        int width, height;
        double rate;
        std::uint64_t seed;
    };
    static constexpr Row good[] = {{"simulated", 1920, 1080, 30, 1},
                                   {"simulated:1280x720@60,seed=7", 1280, 720, 60, 7},
                                   {"simulated:@29.97", 1920, 1080, 29.97, 1},
                                   {"simulated:seed=18446744073709551615", 1920, 1080, 30, ~0ULL},
                                   {"simulated:16x4096", 16, 4096, 30, 1}};
    for (const Row &row : good) {
        CAPTURE(row.text);
        const auto source = SimulatedSkySource::parse(row.text);
        REQUIRE(source);
        const SkyParameters &sky = (*source)->parameters();
        CHECK(std::tuple(sky.width, sky.height, sky.framesPerSecond, sky.seed) ==
              std::tuple(row.width, row.height, row.rate, row.seed));
    }
}

TEST_CASE("what is no sky is refused in a line that says what would be right")
{
    struct Wrong {
        const char *text;
        const char *reason;
    };
    constexpr const char *size = "a size is WIDTHxHEIGHT, each from 16 to 4096 pixels";
    constexpr const char *rate = "a rate is @FRAMES a second, from 2 to 240";
    constexpr const char *seed = "a seed is a whole number, 0 or more";
    constexpr const char *form = "write simulated:1280x720@60,seed=7, or less of it";
    static constexpr Wrong wrong[] = {
        {"simulated:", size},          {"simulated:15x16", size},      {"simulated:1280x4097@30", size},
        {"simulated:1280", size},      {"simulated:1280x720x3", size}, {"simulated:1280x720,9", size},
        {"simulated:1280x720@", rate}, {"simulated:@1.9", rate},       {"simulated:@nan", rate},
        {"simulated:seed=-1", seed},   {"simulated:seed=", seed},      {"simulatedx", form},
    };
    for (const Wrong &row : wrong) {
        CAPTURE(row.text);
        const auto source = SimulatedSkySource::parse(row.text);
        REQUIRE_FALSE(source);
        CHECK(source.error().message ==
              "\"" + std::string(row.text) + "\" is no simulated sky: " + std::string(row.reason));
    }
}

TEST_CASE("the element gives the sky's frames with their format and times")
{
    // An odd width: GStreamer pads its rows, the sky's own frames have none.
    const SkyParameters parameters{.width = 321, .height = 181, .framesPerSecond = 29.97, .seed = 3};
    SkyRun run{SimulatedSkySource(parameters)};
    run.setState(GST_STATE_PAUSED);
    REQUIRE(run.waitUntil([&] { return !run.frames.empty(); }));
    const Caps caps(gst_pad_get_current_caps(run.pad.get()));
    GstVideoInfo info;
    REQUIRE(gst_video_info_from_caps(&info, caps.get()));
    CHECK(GST_VIDEO_INFO_FORMAT(&info) == GST_VIDEO_FORMAT_I420);
    CHECK(info.width == 321);
    CHECK(info.height == 181);
    CHECK(info.fps_n * 100 == info.fps_d * 2997);
    CHECK(gst_video_colorimetry_matches(&info.colorimetry, "bt709"));
    const VideoFrame first = SimulatedSky(parameters).frame(0);
    bool isSame = run.last.size() == info.size;
    for (std::size_t y = 0; isSame && y < 181; ++y)
        isSame = std::memcmp(run.last.data() + y * std::size_t(info.stride[0]),
                             first.planes[0].data + y * std::size_t(first.planes[0].stride), 321) == 0;
    for (std::size_t y = 0; isSame && y < 91; ++y)
        isSame = std::memcmp(run.last.data() + info.offset[2] + y * std::size_t(info.stride[2]),
                             first.planes[2].data + y * std::size_t(first.planes[2].stride), 161) == 0;
    CHECK(isSame);

    run.setState(GST_STATE_PLAYING);
    REQUIRE(run.waitUntil([&] { return run.frames.size() >= 3; }));
    run.setState(GST_STATE_NULL);
    const std::size_t count = run.frames.size();
    for (std::size_t i = 1; i < count; ++i)
        CHECK(run.frames[i].time >= run.frames[i - 1].time + run.frames[i - 1].duration);
    CHECK(run.frames[0].time == 0);
    CHECK(run.frames[0].duration == 33'366'700);
}

TEST_CASE("a sky that is late leaves frames out")
{
    SkyRun run{SimulatedSkySource({.width = 640, .height = 360, .framesPerSecond = 30, .seed = 1})};
    // As if the graph had been held up for ten seconds.
    const std::unique_ptr<GstClock, Release<&gst_object_unref>> clock(gst_system_clock_obtain());
    gst_pipeline_use_clock(GST_PIPELINE(run.pipeline.get()), clock.get());
    gst_element_set_start_time(run.pipeline.get(), GST_CLOCK_TIME_NONE);
    gst_element_set_base_time(run.pipeline.get(), gst_clock_get_time(clock.get()) - 10 * GST_SECOND);
    run.setState(GST_STATE_PLAYING);
    const auto isThere = [&] { return !run.frames.empty() && run.frames.back().time >= 10 * GST_SECOND; };
    REQUIRE(run.waitUntil(isThere));
    run.setState(GST_STATE_NULL);
    const auto early = std::count_if(run.frames.begin(), run.frames.end(),
                                     [](const auto &frame) { return frame.time < 10 * GST_SECOND; });
    CHECK(early < 150); // those of the graph's own start; all would be 300
}

TEST_CASE("a sky stops from any state and starts again from its beginning")
{
    SkyRun run{SimulatedSkySource({.width = 64, .height = 36, .framesPerSecond = 30, .seed = 1})};
    for (const GstState state :
         {GST_STATE_PLAYING, GST_STATE_READY, GST_STATE_PAUSED, GST_STATE_PLAYING, GST_STATE_PLAYING}) {
        run.setState(state);
        if (state != GST_STATE_READY)
            REQUIRE(run.waitUntil([&] { return !run.frames.empty(); }));
        run.setState(GST_STATE_NULL);
        // Its thread has come home: nothing is written any more.
        if (state != GST_STATE_READY)
            CHECK(run.frames.front().time == 0);
        run.frames.clear();
    }
    CHECK(run.frames.empty());
}

} // namespace skyflare
