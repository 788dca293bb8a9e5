#include "platform/linux/V4l2Focus.h"

#include "platform/linux/OpenFile.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace skyflare {

namespace {

Error focusError(const std::string &path, int code)
{
    const bool isBusy = code == EBUSY || code == EWOULDBLOCK;
    const std::string why = isBusy                            ? "is being configured by another program"
                            : code == EACCES || code == EPERM ? "may not be opened by this user"
                            : code == ENOENT || code == ENODEV || code == ENXIO
                                ? "is not connected"
                                : std::string("cannot be focused: ") + std::strerror(code);
    return {.domain = "v4l2", .code = code, .message = path + " " + why};
}

} // namespace

Result<V4l2Focus::DeviceCall> V4l2Focus::openDevice(const std::string &path)
{
    const auto file = std::make_shared<OpenFile>(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (file->descriptor < 0 || ::flock(file->descriptor, LOCK_EX | LOCK_NB) != 0)
        return focusError(path, errno);
    return DeviceCall([file](unsigned long request, void *argument) {
        int outcome = 0;
        do {
            outcome = ::ioctl(file->descriptor, request, argument);
        } while (outcome != 0 && errno == EINTR);
        return outcome == 0 ? 0 : errno;
    });
}

Result<> V4l2Focus::lock()
{
    if (device_)
        return focusError(path_, EBUSY);
    auto opened = open_(path_);
    if (!opened)
        return opened.error();
    // Who records with priority lets nobody else touch the controls. Drivers without priorities do not
    // answer.
    __u32 priority = V4L2_PRIORITY_UNSET;
    if ((*opened)(VIDIOC_G_PRIORITY, &priority) == 0 && priority == V4L2_PRIORITY_RECORD)
        return focusError(path_, EBUSY);
    device_ = std::move(*opened);
    return {};
}

void V4l2Focus::setMode(FocusMode mode)
{
    if (!device_)
        return;
    if (mode == FocusMode::AutoFocus)
        focusOnce();
    else
        static_cast<void>(set(V4L2_CID_FOCUS_AUTO, mode == FocusMode::ContinuousAutoFocus ? 1 : 0));
}

void V4l2Focus::focusOnce() const
{
    // A search of its own is undefined while the continuous one runs; and that one begins anew when it is
    // switched off and on.
    const bool hasContinuous = set(V4L2_CID_FOCUS_AUTO, 0);
    if (set(V4L2_CID_AUTO_FOCUS_START, 1))
        return;
    if (hasContinuous)
        static_cast<void>(set(V4L2_CID_FOCUS_AUTO, 1));
    else if (const auto infinity = leastOf(V4L2_CID_FOCUS_ABSOLUTE))
        static_cast<void>(set(V4L2_CID_FOCUS_ABSOLUTE, *infinity));
}

/// The control's least value; nothing where the device has no such control that could be set.
std::optional<std::int32_t> V4l2Focus::leastOf(std::uint32_t control) const
{
    v4l2_queryctrl query{};
    query.id = control;
    constexpr __u32 unusable = V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY;
    if (device_(VIDIOC_QUERYCTRL, &query) != 0 || (query.flags & unusable) != 0)
        return {};
    return query.minimum;
}

bool V4l2Focus::set(std::uint32_t control, std::int32_t value) const
{
    v4l2_control setting{};
    setting.id = control;
    setting.value = value;
    return leastOf(control) && device_(VIDIOC_S_CTRL, &setting) == 0;
}

} // namespace skyflare
