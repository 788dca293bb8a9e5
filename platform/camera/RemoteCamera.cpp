#include "platform/camera/RemoteCamera.h"

#include "platform/camera/GstSetup.h"
#include "platform/camera/PipeWireElement.h"

namespace skyflare {

namespace {

/// The element takes the number, not the connection: that is held as long as the element lives.
void setRemote(GstElement *pipewireSource, const RemoteCamera::Remote &remote)
{
    const auto letGo = +[](gpointer held) {
        const std::unique_ptr<RemoteCamera::Remote> last(static_cast<RemoteCamera::Remote *>(held));
    };
    g_object_set_data_full(G_OBJECT(pipewireSource), "skyflare-remote",
                           std::make_unique<RemoteCamera::Remote>(remote).release(), letGo);
    g_object_set(pipewireSource, "fd", *remote, nullptr);
}

} // namespace

Result<Element> RemoteCamera::makeElement() const
{
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    const auto remote = openRemote_();
    if (!remote)
        return Error{"camera", 0, name_ + " cannot be opened: " + remote.error().message};
    auto source = makeGstElement("pipewiresrc");
    if (!source)
        return source.error();
    setUpPipeWire(source->get());
    setRemote(source->get(), *remote);
    // What it can give is not known beforehand.
    const Caps readable(gst_caps_from_string("video/x-raw; image/jpeg"));
    return heldToFormat(*std::move(source), readable.get(), PadComes::WithItsCaps);
}

} // namespace skyflare
