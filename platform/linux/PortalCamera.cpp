#include "platform/linux/PortalCamera.h"

#include "platform/linux/Portal.h"

#include <gio/gio.h>

#include <future>
#include <utility>

namespace skyflare {

namespace {

constexpr const char *interface = "org.freedesktop.portal.Camera";

} // namespace

CameraAuthorizationStatus PortalCamera::authorizationStatus()
{
    return isGranted_ ? CameraAuthorizationStatus::Authorized : CameraAuthorizationStatus::NotDetermined;
}

// Deliberate: the question that may still be open is left alone. Portals take one that is closed for a no,
// and keep that for good.
void PortalCamera::requestAccess(std::function<void(bool granted)> completionHandler)
{
    const auto arguments = [](GVariant *options) { return g_variant_new("(@a{sv})", options); };
    request_ = PortalRequest::ask(bus_, {interface, "AccessCamera", arguments},
                                  [weak = weak_from_this(), completionHandler = std::move(completionHandler)](
                                      const Result<PortalRequest::Answer> &answer) {
                                      if (const auto self = weak.lock())
                                          completionHandler(self->take(answer));
                                  });
}

bool PortalCamera::take(const Result<PortalRequest::Answer> &answer)
{
    if (!answer && !std::exchange(isReported_, true))
        console_.reportLine((isMissing(answer.error())
                                 ? "The camera may not be used here: the desktop has no portal for it: "
                                 : "The camera cannot be asked for: ") +
                            answer.error().message);
    isGranted_ = answer && answer->response == PortalRequest::Response::Success;
    return isGranted_;
}

std::optional<bool> PortalCamera::isCameraPresent()
{
    const auto answer = callAndWait(portal::propertyCall(interface, "IsCameraPresent"));
    if (!answer)
        return {};
    const Variant isPresent = portal::propertyIn(*answer);
    if (g_variant_is_of_type(isPresent.get(), G_VARIANT_TYPE_BOOLEAN) == FALSE)
        return {};
    return g_variant_get_boolean(isPresent.get()) == TRUE;
}

Result<std::shared_ptr<const OpenFile>> PortalCamera::openPipeWireRemote()
{
    const auto answer = callAndWait({portal::service, portal::path, interface, "OpenPipeWireRemote",
                                     takeVariant(g_variant_new("(a{sv})", nullptr)), "(h)"});
    if (answer && !answer->files.empty() && answer->files.front()->descriptor >= 0)
        return answer->files.front();
    isGranted_ = false;
    return answer ? Error{"portal", 0, "the desktop portal gave no connection to it"} : answer.error();
}

Result<BusAnswer> PortalCamera::callAndWait(BusCall call)
{
    auto promise = std::make_shared<std::promise<Result<BusAnswer>>>();
    auto answer = promise->get_future();
    bus_.call(std::move(call), [promise = std::move(promise)](const Result<BusAnswer> &result) {
        promise->set_value(result);
    });
    if (answer.wait_for(longestWait_) != std::future_status::ready)
        return Error{"portal", 0, "the desktop portal does not answer"};
    try {
        return answer.get();
    } catch (const std::future_error &) { // the program ends, and nobody is left to answer
        return Error{"portal", 0, "the program ends"};
    }
}

} // namespace skyflare
