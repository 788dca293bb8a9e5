#include "platform/camera/FilmSource.h"
#include "platform/camera/StillRequests.h"
#include "platform/image/Image.h"
#include "tests/camera/CameraRig.h"

#include <doctest/doctest.h>

#include <future>
#include <latch>

namespace skyflare {

namespace {

using namespace std::chrono_literals;

/// Does what a test wants once a frame has been delivered.
struct TestGate final : FrameGate {
    std::function<void()> delivered;
    void willDeliver(std::chrono::nanoseconds) override {}
    void didDeliver() override
    {
        if (delivered)
            delivered();
    }
};

bool isEndOfStream(GstPadProbeInfo *info)
{
    return !isFrame(info) && GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_EOS;
}

} // namespace

TEST_CASE_FIXTURE(Films, "a stop in mid-film returns at once; the graph comes down when main has let it go")
{
    TestGate gate;
    std::promise<void> frameIsOut;
    std::promise<void> mainServes;
    const auto served = mainServes.get_future().share();
    gate.delivered = [&] {
        frameIsOut.set_value();
        served.wait();
    };
    CameraRig rig(std::make_shared<FilmSource>(rising("a.mp4"), Pacing::LockStep), &gate);
    rig.start();
    REQUIRE(frameIsOut.get_future().wait_for(deadline) == std::future_status::ready);
    rig.session->stopRunning();
    CHECK_FALSE(rig.session->isRunning());
    SUBCASE("soon")
    {
        mainServes.set_value();
        REQUIRE(rig.events->waitFor(Kind::Stopped));
        CHECK(rig.events->at(1).message.empty());
    }
    SUBCASE("never: after a while it is left behind, which is said")
    {
        REQUIRE(rig.events->waitFor(Kind::Stopped));
        CHECK(rig.events->at(1).message == "a.mp4 does not stop; it is left behind");
        mainServes.set_value();
    }
    SUBCASE("or the session is let go of as well")
    {
        rig.session.reset();
        mainServes.set_value();
        REQUIRE(rig.events->waitFor(Kind::Stopped));
    }
    CHECK(rig.events->size() == 2);
    CHECK(rig.frames->times.size() == 1);
}

TEST_CASE_FIXTURE(Films, "in lock-step a photo is the frame that asked for it")
{
    TestGate gate;
    CameraRig rig(std::make_shared<FilmSource>(rising("a.mp4"), Pacing::LockStep), &gate);
    gate.delivered = [&] { rig.queues.drainGlobal(); };
    const auto photos = std::make_shared<PhotoLog>();
    rig.frames->seen = [&](const VideoFrame &frame) {
        // Each is there before the next frame.
        CHECK(photos->photos.size() == (frame.streamTime > 800ms ? 2 : frame.streamTime > 400ms ? 1 : 0));
        if (frame.streamTime == 400ms || frame.streamTime == 800ms)
            rig.queues.globalUserInitiated().async([&] { rig.photoOutput->capturePhoto({}, photos); });
    };
    REQUIRE(rig.runToEnd());
    REQUIRE(photos->photos.size() == 2);
    for (const std::size_t index : {0U, 1U}) {
        const auto image = Image::fromData(Bytes(*photos->photos[index].fileDataRepresentation()));
        REQUIRE(image);
        CHECK(image->width() == 322);
        const PixelBuffer mean = reduced(*image->pixels(), 1, 1);
        CHECK(mean.rgb[0] == rig.frames->reds[10 + 10 * index]);
    }
    rig.photoOutput->capturePhoto({}, photos);
    REQUIRE(photos->photos.size() == 3);
    CHECK_FALSE(photos->photos[2].fileDataRepresentation());
    CHECK(photos->error == "a.mp4 gives no more pictures");
}

TEST_CASE("in lock-step a fault is told after the pictures that were read before it")
{
    CameraRig rig(std::make_shared<TestCamera>("videotestsrc ! " + raw + " ! identity error-after=16 ! queue",
                                               Pacing::LockStep));
    rig.frames->seen = [](const VideoFrame &frame) { CHECK(encodePng(*convertToRgb(frame))); }; // slowly
    REQUIRE(rig.runToEnd());
    CHECK(rig.frames->times.size() == 15);
    CHECK(rig.events->at(1).message == "Test camera: Failed after iterations as requested (at 0.5 s)");
}

TEST_CASE("in real time late frames are dropped, and each is counted")
{
    std::latch through(1);
    CameraRig rig(std::make_shared<TestCamera>("videotestsrc num-buffers=40 ! " + raw, Pacing::RealTime,
                                               [&](GstPadProbeInfo *info) {
                                                   if (isEndOfStream(info))
                                                       through.count_down();
                                                   return GST_PAD_PROBE_OK;
                                               }));
    rig.frames->seen = [&](const VideoFrame &) { through.wait(); };
    REQUIRE(rig.runToEnd());
    CHECK(rig.events->at(1).kind == Kind::Ended);
    CHECK(rig.session->frameStatistics().delivered == 2);
    CHECK(rig.session->frameStatistics().dropped == 38);
    CHECK(rig.frames->times.back() == 1300ms); // the newest; the first depends on how busy the machine is
}

TEST_CASE("a live camera's photo is the next whole frame, a compressed one byte for byte")
{
    std::vector<Bytes> given;
    std::mutex mutex;
    int passed = 0;
    const auto note = [&](GstPadProbeInfo *info) {
        if (!isFrame(info))
            return GST_PAD_PROBE_OK;
        GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
        if (++passed % 4 >= 2) { // empty, or cut short
            info->data = buffer = gst_buffer_make_writable(buffer);
            gst_buffer_resize(buffer, 0, gssize(gst_buffer_get_size(buffer)) * (passed % 2) / 2);
            return GST_PAD_PROBE_OK;
        }
        Bytes bytes(gst_buffer_get_size(buffer));
        gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
        const std::scoped_lock lock(mutex);
        given.push_back(std::move(bytes));
        return GST_PAD_PROBE_OK;
    };
    const auto photos = std::make_shared<PhotoLog>();
    CameraRig rig(std::make_shared<TestCamera>(
        "videotestsrc is-live=true pattern=ball ! " + raw + " ! videoconvert ! jpegenc", Pacing::Live, note));
    rig.photoOutput->capturePhoto({}, photos);
    CHECK(photos->error == "the camera is not running");
    rig.start();
    REQUIRE(rig.events->waitFor(Kind::Started));
    std::size_t before = 0;
    {
        const std::scoped_lock lock(mutex);
        before = given.size();
    }
    for (int count = 0; count < 5; ++count)
        rig.photoOutput->capturePhoto({}, photos);
    REQUIRE(photos->waitFor(6));
    rig.session->stopRunning();
    REQUIRE(rig.events->waitFor(Kind::Stopped));
    for (std::size_t index = 1; index < 6; ++index) {
        const auto photo = photos->photos[index].fileDataRepresentation();
        REQUIRE(photo);
        const auto found = std::find(given.begin(), given.end(), *photo);
        CHECK(found - given.begin() >= std::ptrdiff_t(before) - 1);
        CHECK(found != given.end());
    }
}

TEST_CASE("a live camera that falls silent, ends or breaks is lost; one that never speaks has failed")
{
    struct Row {
        const char *how;
        std::string elements;
        int framesGiven;
        Kind ending;
        const char *message;
    };
    static const Row rows[] = {
        {"silent", liveCamera, 3, Kind::Lost, "Test camera gives no more pictures"},
        {"ends", "videotestsrc is-live=true num-buffers=3 ! " + raw, 99, Kind::Lost,
         "Test camera gives no more pictures"},
        {"breaks", liveCamera + " ! identity error-after=3", 99, Kind::Lost,
         "Test camera: Failed after iterations as requested"},
        {"never speaks", liveCamera, 0, Kind::Failed, "Test camera gives no pictures"},
        {"is absent", "v4l2src device=/dev/video-none ! " + raw, 0, Kind::Failed,
         "Test camera: it is not there"},
    };
    std::vector<std::unique_ptr<CameraRig>> rigs; // all at once: most of them only wait
    for (const Row &row : rows) {
        const auto passing = [left = std::make_shared<int>(row.framesGiven)](GstPadProbeInfo *info) {
            return isFrame(info) && (*left)-- <= 0 ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
        };
        rigs.push_back(
            std::make_unique<CameraRig>(std::make_shared<TestCamera>(row.elements, Pacing::Live, passing)));
        rigs.back()->start();
    }
    for (std::size_t index = 0; index < rigs.size(); ++index) {
        CAPTURE(rows[index].how);
        REQUIRE(rigs[index]->events->waitFor(Kind::Stopped));
        const SessionEvent ending = rigs[index]->events->ending();
        CHECK(ending.kind == rows[index].ending);
        CHECK(ending.message.starts_with(rows[index].message));
    }
}

TEST_CASE("a session starts and stops as often as one likes, and may be let go of while it runs")
{
    const auto camera = std::make_shared<TestCamera>(liveCamera, Pacing::Live);
    camera->device = "/dev/video-test";
    CameraRig rig(camera);
    for (std::size_t count = 1; count <= 10; ++count) {
        rig.start();
        REQUIRE(rig.events->waitFor(Kind::Started, count));
        CHECK(rig.session->isRunning());
        if (count > 5) { // another session each time, as a new run of the program's makes it
            rig.makeSession();
        } else {
            rig.session->stopRunning();
        }
    }
    REQUIRE(rig.events->waitFor(Kind::Stopped, 10));
    CHECK(rig.events->size() == 20);

    rig.makeSession();
    rig.session->stopRunning(); // before the start that is on its way has come to videoQueue
    rig.start();
    REQUIRE(rig.events->waitFor(Kind::Stopped, 11));
    CHECK(rig.events->size() == 21);
    CHECK_FALSE(rig.session->isRunning());
}

TEST_CASE("a still keeps none of the camera's buffers while it is encoded")
{
    struct HeldQueue final : DispatchQueue {
        using DispatchQueue::DispatchQueue;
        std::vector<Work> held;
        void async(Work work) override { held.push_back(std::move(work)); }
        bool sync(const Work &) override { return false; }
        void asyncAfter(std::chrono::nanoseconds, Work) override {}
    } queue("encoding");
    const auto stills = std::make_shared<StillRequests>(queue);
    const auto photos = std::make_shared<PhotoLog>();
    const auto bytes = std::make_shared<Bytes>(1000 * 700, std::uint8_t{90});
    VideoFrame frame{PixelFormat::GRAY8, 1000, 700, {{{bytes->data(), 1000}}}, {}, {}, {}, bytes};
    stills->request({}, photos);
    stills->request({.smallCopy = CapturePhotoSettings::SmallCopy::Yes}, photos);
    stills->offer(std::exchange(frame, {}));
    CHECK(bytes.use_count() == 1);
    for (const auto &work : queue.held)
        work();
    REQUIRE(photos->waitFor(2));
    CHECK_FALSE(photos->photos[0].smallCopy);
    const auto copy = photos->photos[1].smallCopy;
    REQUIRE(copy);
    CHECK(Image::fromData(Bytes(*copy))->width() == 914);
}

} // namespace skyflare
