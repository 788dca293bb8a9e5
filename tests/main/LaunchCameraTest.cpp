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
    std::string outcome;
    LaunchCamera camera{
        {.mainQueue = mainQueue,
         .choose = [this] { return found.get_future().get(); },
         .refusedDevice = [this] { return refused; },
         .makeFramework =
             [this](const std::shared_ptr<CameraSource> &source) -> std::unique_ptr<CaptureFramework> {
             hasCamera = source != nullptr;
             return std::make_unique<FakeFramework>();
         },
         .makeAuthorization = [this](std::filesystem::path device) -> std::unique_ptr<CameraAuthorization> {
             askedFor = std::move(device);
             auto authorization = std::make_unique<FakeCameraAuthorization>();
             authorization->status =
                 askedFor.empty() ? CameraAuthorizationStatus::Authorized : CameraAuthorizationStatus::Denied;
             return authorization;
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

TEST_CASE_FIXTURE(Launch, "the camera is chosen off main, and its permission is undetermined until then")
{
    const auto sky = std::make_shared<SimulatedSkySource>();
    SUBCASE("no camera: the simulated one")
    {
        end(CameraChoice{sky, CameraChoice::Kind::SimulatedInstead});
        CHECK(outcome == "simulated");
        CHECK(hasCamera);
        CHECK(camera.authorizationStatus() == CameraAuthorizationStatus::Authorized);
        CHECK(camera.makeSession() != nullptr);
    }
    SUBCASE("a camera")
    {
        end(CameraChoice{sky, CameraChoice::Kind::Device});
        CHECK(outcome == "real");
    }
    SUBCASE("a camera that this user may not open is not replaced")
    {
        refused = "/dev/video0";
        end(CameraChoice{sky, CameraChoice::Kind::SimulatedInstead});
        CHECK(outcome == "real");
        CHECK_FALSE(hasCamera);
        CHECK(askedFor == "/dev/video0");
        CHECK(camera.authorizationStatus() == CameraAuthorizationStatus::Denied);
    }
    SUBCASE("no way to look")
    {
        end(Error{"camera", 0, "GStreamer does not start"});
        CHECK(outcome == "GStreamer does not start");
        CHECK_FALSE(hasCamera);
    }
}
