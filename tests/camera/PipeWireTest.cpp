// Cameras of a PipeWire that runs for these tests alone: found, run, lost, and found again.

#include "platform/camera/CameraMonitor.h"
#include "platform/camera/RemoteCamera.h"
#include "platform/image/Image.h"
#include "tests/camera/CameraRig.h"
#include "tests/fakes/PrivatePipeWire.h"
#include "tests/fakes/WaitUntil.h"

#include <doctest/doctest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <future>

using namespace skyflare;

namespace {

/// One for the process, as the monitor is, and there before it.
PrivatePipeWire &pipeWire()
{
    static PrivatePipeWire running;
    return running;
}

/// A camera that has just come: the monitor may take a moment to hear of it.
std::shared_ptr<CameraSource> cameraNamed(const std::string &name)
{
    REQUIRE(waitUntil([&name] { return bool(CameraMonitor::shared().cameraNamed(name)); }));
    return *CameraMonitor::shared().cameraNamed(name);
}

/// Starts `rig` and waits for its first picture, or until there is none. @return the event that says so
SessionEvent startAndWait(CameraRig &rig)
{
    const std::size_t before = rig.events->size();
    rig.start();
    return rig.events->at(before);
}

/// What a portal gives: a connection to the server.
RemoteCamera::Remote connectToServer()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const auto path = std::filesystem::path(std::getenv("PIPEWIRE_RUNTIME_DIR")) / "pipewire-0";
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int opened = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    REQUIRE(connect(opened, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0);
    return {new int(opened), [](const int *held) {
                close(*held);
                delete held; // NOLINT: no other way to hold a number so
            }};
}

bool isNear(int value, int wanted, int tolerance)
{
    return std::abs(value - wanted) <= tolerance;
}

} // namespace

TEST_CASE("a camera is found, measured and photographed, whatever its pictures are made of")
{
    const Films films;
    const auto jpeg = films.make("dark.jpg", "-f lavfi -i color=c=0x204060:s=322x182 -frames:v 1");
    struct Row {
        const char *name;
        PrivatePipeWire::Pictures pictures;
        int tolerance; ///< steps of red
    };
    const Row rows[] = {
        {"Night RGBx", {}, 0},
        {"Night I420", {.format = "I420", .width = 323, .height = 181, .rate = 25}, 1},
        {"Night JPEG", {.format = "JPEG", .width = 322, .height = 182, .file = jpeg}, 2},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        const auto shown = pipeWire().camera(row.name, row.pictures);
        const auto camera = cameraNamed(row.name);
        const bool isJpeg = row.pictures.format == "JPEG";
        REQUIRE(camera->formats().size() == 1);
        CHECK(camera->formats()[0].width == row.pictures.width);
        CHECK(camera->formats()[0].framesPerSecond == row.pictures.rate);

        const auto photos = std::make_shared<PhotoLog>();
        CameraRig rig(camera);
        rig.frames->seen = [&](const VideoFrame &frame) {
            const auto &reds = rig.frames->reds;
            const bool isWhiteNow = reds.size() > 1 && reds.back() > 200 && reds[reds.size() - 2] < 200;
            if (reds.size() == 1 || (isWhiteNow && frame.streamTime > std::chrono::milliseconds(500)))
                rig.photoOutput->capturePhoto({}, photos);
        };
        const SessionEvent started = startAndWait(rig);
        REQUIRE_MESSAGE(started.kind == Kind::Started, started.message);
        CHECK(started.format.height == row.pictures.height);
        REQUIRE(photos->waitFor(isJpeg ? 1 : 2)); // of JPEG there is one picture only
        rig.session->stopRunning();
        REQUIRE(rig.events->waitFor(Kind::Stopped));
        REQUIRE(startAndWait(rig).kind == Kind::Started); // once more
        rig.session->stopRunning();
        REQUIRE(rig.events->waitFor(Kind::Stopped, 2));
        REQUIRE(rig.videoQueue->sync([] {}));

        CHECK(std::ranges::all_of(rig.frames->reds, [&row](int red) {
            return isNear(red, 32, row.tolerance) || isNear(red, 255, row.tolerance);
        }));
        CHECK(std::ranges::any_of(rig.frames->reds, [](int red) { return red < 200; }));
        const auto encoded = photos->photos[0].fileDataRepresentation();
        REQUIRE_MESSAGE(encoded, photos->error);
        CHECK((encoded->at(0) == 0xff) == isJpeg); // kept as it came
        const auto photo = Image::fromData(*encoded);
        REQUIRE(photo);
        CHECK(photo->width() == row.pictures.width);
        CHECK(photo->height() == row.pictures.height);
    }
}

TEST_CASE("a camera that goes is lost, and the same one starts when it is back")
{
    for (const bool withAllOthers : {false, true}) {
        CAPTURE(withAllOthers);
        const std::string name = withAllOthers ? "Goes With All" : "Comes And Goes";
        auto shown = pipeWire().camera(name);
        VideoFrame inHand; // as by a slow delegate or an encoder: it is good whatever becomes of the camera
        std::promise<void> frameIsInHand;
        CameraRig rig(cameraNamed(name));
        rig.frames->seen = [&](const VideoFrame &frame) {
            if (inHand.owner)
                return;
            inHand = frame;
            frameIsInHand.set_value();
        };
        REQUIRE(startAndWait(rig).kind == Kind::Started);
        REQUIRE(frameIsInHand.get_future().wait_for(deadline) == std::future_status::ready);
        if (withAllOthers)
            pipeWire().killDaemon();
        else
            shown.reset();
        REQUIRE(rig.events->waitFor(Kind::Stopped));
        const SessionEvent lost = rig.events->ending();
        CHECK(lost.kind == Kind::Lost);
        CHECK(lost.device == name);
        CHECK(lost.message.starts_with(name));
        REQUIRE(rig.videoQueue->sync([] {}));
        CHECK(averageRed(inHand) == rig.frames->reds.front());

        REQUIRE(waitUntil([&name] { return !CameraMonitor::shared().cameraNamed(name); }));
        const SessionEvent missing = startAndWait(rig);
        CHECK(missing.kind == Kind::Failed);
        CHECK(missing.message == name + " is not connected");
        REQUIRE(rig.events->waitFor(Kind::Stopped, 2));

        if (withAllOthers)
            pipeWire().start();
        shown = pipeWire().camera(name);
        CHECK(cameraNamed(name)->identity() == rig.camera->identity());
        CHECK(startAndWait(rig).kind == Kind::Started);
    }
}

TEST_CASE("a camera whose pictures cannot be had is refused, and does not spoil the next one")
{
    auto shown = pipeWire().camera("Fickle");
    CameraRig changed(cameraNamed("Fickle"));
    shown = pipeWire().camera("Fickle", {.format = "H264"});
    REQUIRE(waitUntil([] { return !CameraMonitor::shared().cameraNamed("Fickle"); }));
    const auto stubborn = pipeWire().camera("Stubborn", {.format = "Refused"});
    CameraRig refusing(cameraNamed("Stubborn"));

    for (CameraRig *rig : {&changed, &refusing}) {
        const SessionEvent refused = startAndWait(*rig);
        CHECK(refused.kind == Kind::Failed);
        // The one that has changed may still be away, or be back with pictures that nobody reads.
        CHECK(refused.message.starts_with(rig == &changed ? "Fickle " : "Stubborn gives no pictures"));
        REQUIRE(rig->events->waitFor(Kind::Stopped));
    }
    const auto good = pipeWire().camera("Steady");
    CameraRig next(cameraNamed("Steady"));
    CHECK(startAndWait(next).kind == Kind::Started);
}

TEST_CASE("the camera behind a connection that somebody else opens runs, each time on another one")
{
    const Films films;
    const auto jpeg = films.make("dark.jpg", "-f lavfi -i color=c=0x204060:s=322x182 -frames:v 1");
    const PrivatePipeWire::Pictures kinds[] = {
        {.format = "I420", .width = 323, .height = 181},
        {.format = "JPEG", .width = 322, .height = 182, .file = jpeg},
    };
    std::vector<std::weak_ptr<const int>> opened;
    std::string refusal;
    CameraRig rig(
        std::make_shared<RemoteCamera>("The desktop's camera", [&]() -> Result<RemoteCamera::Remote> {
            if (!refusal.empty())
                return Error{"portal", 0, refusal};
            auto remote = connectToServer();
            opened.push_back(remote);
            return remote;
        }));
    for (const auto &pictures : kinds) {
        const auto shown = pipeWire().camera("Behind It", pictures);
        const SessionEvent started = startAndWait(rig);
        REQUIRE_MESSAGE(started.kind == Kind::Started, started.message);
        CHECK(started.format.width == pictures.width);
        rig.session->stopRunning();
        REQUIRE(rig.events->waitFor(Kind::Stopped, opened.size()));
        CHECK(opened.back().expired());
    }
    CHECK(opened.size() == 2);
    refusal = "not allowed";
    const SessionEvent refused = startAndWait(rig);
    CHECK(refused.kind == Kind::Failed);
    CHECK(refused.message == "The desktop's camera cannot be opened: not allowed");
}
