#include "app/CameraFinder.h"

#include "platform/camera/CameraChoice.h"
#include "platform/camera/GstSetup.h"
#include "platform/camera/RemoteCamera.h"
#include "platform/linux/PortalCamera.h"
#include "platform/linux/V4l2Focus.h"

#include <utility>

namespace skyflare {

namespace {

Result<RemoteCamera::Remote> openRemote(PortalCamera &portal)
{
    auto opened = portal.openPipeWireRemote();
    if (!opened)
        return opened.error();
    const int *descriptor = &(*opened)->descriptor;
    return RemoteCamera::Remote(*std::move(opened), descriptor);
}

} // namespace

Result<CameraChoice> findCamera(const std::string &name)
{
    auto choice =
        chooseCamera(name, [](const std::string &path) { return std::make_shared<V4l2Focus>(path); });
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    return choice;
}

CameraFinder findInSandbox(std::shared_ptr<PortalCamera> portal, CameraFinder elsewhere)
{
    return [portal = std::move(portal),
            elsewhere = std::move(elsewhere)](const std::string &name) -> Result<CameraChoice> {
        if (name != "auto")
            return elsewhere(name);
        if (const auto ready = initialiseGStreamer(); !ready)
            return ready.error();
        if (!portal->isCameraPresent().value_or(true)) { // who does not tell is heard at the first tap
            auto choice = chooseCamera("simulated", {});
            if (choice)
                choice->kind = CameraChoice::Kind::SimulatedInstead;
            return choice;
        }
        return CameraChoice{
            std::make_shared<RemoteCamera>("The desktop's camera", [portal] { return openRemote(*portal); }),
            CameraChoice::Kind::Remote};
    };
}

} // namespace skyflare
