#include "app/LaunchCamera.h"

#include "app/MainQueue.h"
#include "platform/camera/SimulatedSkySource.h"
#include "tests/fakes/FakeCamera.h"
#include "tests/fakes/RecordingDesktop.h"

#include <doctest/doctest.h>

#include <QCoreApplication>
#include <future>

using namespace skyflare;

namespace {

/// A launch whose look for cameras ends when the test says so.
struct Launch {
    MainQueue mainQueue;
    std::promise<Result<CameraChoice>> found;
    std::filesystem::path refused;
    std::filesystem::path askedFor; ///< whose permission is looked at
    bool hasCamera = false;
    bool isRemote = false;
    std::string outcome;
    LaunchCamera camera{{.mainQueue = mainQueue,
                         .choose = [this] { return found.get_future().get(); },
                         .refusedDevice = [this] { return refused; },
                         .makeFramework = [this](const std::shared_ptr<CameraSource> &source)
                             -> std::unique_ptr<CaptureFramework> {
                             hasCamera = source != nullptr;
                             return std::make_unique<FakeFramework>();
                         },
                         .makeAuthorization =
                             [this](CameraChoice::Kind kind, std::filesystem::path device) {
                                 isRemote = kind == CameraChoice::Kind::Remote;
                                 askedFor = std::move(device);
                                 return std::make_shared<FakeCameraAuthorization>();
                             }}};

    void end(Result<CameraChoice> choice)
    {
        camera.choose([this](const Result<bool> &isSimulated) {
            outcome = !isSimulated ? isSimulated.error().message : *isSimulated ? "simulated" : "real";
        });
        CHECK(camera.authorizationStatus() == CameraAuthorizationStatus::NotDetermined);
        CHECK(camera.isChoosing());
        CHECK(camera.makeSession() == nullptr);
        found.set_value(std::move(choice));
        while (camera.isChoosing())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
};

} // namespace

TEST_CASE("the camera is chosen off main, and its permission is undetermined until then")
{
    const auto sky = std::make_shared<SimulatedSkySource>();
    struct Row {
        std::string expected;
        Result<CameraChoice> choice;
        std::filesystem::path refused = {};
    };
    const Row rows[] = {
        {"simulated, with a camera", CameraChoice{sky, CameraChoice::Kind::SimulatedInstead}},
        {"real, with a camera", CameraChoice{sky, CameraChoice::Kind::Device}},
        {"real, with a camera, remote", CameraChoice{sky, CameraChoice::Kind::Remote}},
        // One that this user may not open is not replaced.
        {"real", CameraChoice{sky, CameraChoice::Kind::SimulatedInstead}, "/dev/video0"},
        {"GStreamer does not start", Error{"camera", 0, "GStreamer does not start"}},
    };
    for (const Row &row : rows) {
        Launch launch;
        launch.refused = row.refused;
        launch.end(row.choice);
        CHECK(launch.outcome + (launch.hasCamera ? ", with a camera" : "") +
                  (launch.isRemote ? ", remote" : "") ==
              row.expected);
        CHECK(launch.askedFor == row.refused);
        CHECK(launch.camera.makeSession() != nullptr);
    }
}
