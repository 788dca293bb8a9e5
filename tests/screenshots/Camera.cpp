#include "tests/screenshots/Camera.h"

#include "platform/camera/sky/SimulatedSky.h"
#include "tests/fakes/FakeCamera.h"

namespace skyflare {

namespace {

VideoFrame burst()
{
    constexpr int framesAfterFirstLight = 14; // full size, still bright
    SimulatedSky sky(SkyParameters{});
    return sky.frame(sky.burstFrames(20).at(1) + framesAfterFirstLight);
}

} // namespace

PictureCamera::PictureCamera()
    : session_(std::make_shared<FakeSession>(FakeSession::Refuses{})), frame_(burst())
{
}

void PictureCamera::show() const
{
    if (const auto preview = session_->preview())
        preview->show(frame_);
}

} // namespace skyflare
