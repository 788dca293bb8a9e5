#include "platform/camera/DeviceCamera.h"

#include "platform/camera/CameraFormats.h"
#include "platform/camera/GstSetup.h"

namespace skyflare {

namespace {

/// Without "Video" PipeWire's session manager takes the stream for sound, and silently lets go of it. Not
/// every camera of PipeWire's says when its pictures were taken: then the moment counts at which they come.
/// And each picture is copied: its memory is taken away while it is still looked at when the camera goes.
void setUpPipeWire(GstElement *pipewireSource)
{
    const Structure properties(gst_structure_new("props", "media.type", G_TYPE_STRING, "Video",
                                                 "media.category", G_TYPE_STRING, "Capture", "media.role",
                                                 G_TYPE_STRING, "Camera", nullptr));
    g_object_set(pipewireSource, "stream-properties", properties.get(), "do-timestamp", TRUE, "always-copy",
                 TRUE, nullptr);
}

/// The two as one element with a "src" pad. Takes both.
Result<Element> inOneBin(Element source, Element filter)
{
    Element bin(GST_ELEMENT(gst_object_ref_sink(gst_bin_new(nullptr))));
    gst_bin_add_many(GST_BIN(bin.get()), source.get(), filter.get(), nullptr);
    if (!gst_element_link(source.get(), filter.get()))
        return Error{"camera", 0, "its pictures are of a kind that cannot be read"};
    const Pad pad(gst_element_get_static_pad(filter.get(), "src"));
    gst_element_add_pad(bin.get(), gst_ghost_pad_new("src", pad.get()));
    return bin;
}

} // namespace

Result<> DeviceCamera::lockForConfiguration()
{
    const std::scoped_lock lock(mutex_);
    if (isLocked_)
        return Error{"camera", 0, facts_.name + " is being configured by somebody else"};
    std::shared_ptr<FocusControl> focus;
    if (makeFocus_ && !facts_.v4l2Path.empty())
        focus = makeFocus_(facts_.v4l2Path);
    if (focus) {
        if (const auto locked = focus->lock(); !locked)
            return locked.error();
    }
    focus_ = std::move(focus);
    isLocked_ = true;
    return {};
}

void DeviceCamera::setFocusPointOfInterest(Point point)
{
    if (const auto focus = lockedFocus())
        focus->setPointOfInterest(point);
}

void DeviceCamera::setFocusMode(FocusMode mode)
{
    if (const auto focus = lockedFocus())
        focus->setMode(mode);
}

void DeviceCamera::unlockForConfiguration()
{
    const std::scoped_lock lock(mutex_);
    if (focus_)
        focus_->unlock();
    focus_.reset();
    isLocked_ = false;
}

std::shared_ptr<FocusControl> DeviceCamera::lockedFocus()
{
    const std::scoped_lock lock(mutex_);
    return focus_;
}

Result<Element> DeviceCamera::makeElement() const
{
    const Device device = devices_->device(facts_.identity);
    if (!device)
        return Error{"camera", 0, facts_.name + " is not connected"};
    Element source(gst_device_create_element(device.get(), nullptr));
    if (!source)
        return Error{"camera", 0, facts_.name + " cannot be opened: a part of GStreamer is missing"};
    if (g_object_is_floating(source.get()))
        gst_object_ref_sink(source.get());
    if (facts_.provider == DeviceFacts::Provider::PipeWire)
        setUpPipeWire(source.get());

    const Caps offered(gst_device_get_caps(device.get()));
    const Caps chosen = chosenCaps(offered.get());
    if (!chosen)
        return Error{"camera", 0, facts_.name + " gives no pictures that can be read"};
    auto filter = makeGstElement("capsfilter");
    if (!filter)
        return filter.error();
    g_object_set(filter->get(), "caps", chosen.get(), nullptr);
    return inOneBin(std::move(source), std::move(*filter));
}

std::shared_ptr<void> DeviceCamera::whenRemoved(std::function<void()> removed) const
{
    return devices_->whenRemoved(facts_.identity, std::move(removed));
}

} // namespace skyflare
