#include "platform/camera/CameraChoice.h"

#include "platform/camera/CameraMonitor.h"
#include "platform/camera/SimulatedSkySource.h"

#include <utility>

namespace skyflare {

namespace {

Result<CameraChoice> simulatedCamera(const std::string &name, CameraChoice::Kind kind)
{
    auto sky = SimulatedSkySource::parse(name);
    if (!sky)
        return sky.error();
    return CameraChoice{std::move(*sky), kind};
}

} // namespace

Result<CameraChoice> chooseCamera(const std::string &name, const FocusControlFactory &focus)
{
    if (name == "simulated" || name.starts_with("simulated:"))
        return simulatedCamera(name, CameraChoice::Kind::Simulated);
    const CameraMonitor &monitor = CameraMonitor::shared(focus);
    if (name != "auto") {
        auto camera = monitor.cameraNamed(name);
        if (camera)
            return CameraChoice{std::move(*camera), CameraChoice::Kind::Device};
        if (!monitor.outcome())
            return camera.error();
        return Error{"camera", 0,
                     camera.error().message +
                         " (--list-cameras tells more, and \"simulated\" is always there)"};
    }
    if (const auto cameras = monitor.cameras(); !cameras.empty())
        return CameraChoice{cameras.front(), CameraChoice::Kind::Device};
    if (!monitor.outcome())
        return monitor.outcome().error();
    return simulatedCamera("simulated", CameraChoice::Kind::SimulatedInstead);
}

} // namespace skyflare
