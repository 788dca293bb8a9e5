#include "platform/camera/DeviceCamera.h"

#include "platform/camera/CameraFormats.h"
#include "platform/camera/PipeWireElement.h"

namespace skyflare {

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
    return heldToFormat(std::move(source), chosen.get(), PadComes::AtOnce);
}

std::shared_ptr<void> DeviceCamera::whenRemoved(std::function<void()> removed) const
{
    return devices_->whenRemoved(facts_.identity, std::move(removed));
}

} // namespace skyflare
