#pragma once

#include "platform/base/Result.h"
#include "platform/camera/CaptureDevice.h"

#include <gst/gst.h>

#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

/// What is known about one camera as one provider shows it.
///
/// Threads: any; a value.
struct DeviceFacts {
    /// Ways to a camera; where two lead to the same one, the first is taken.
    ///
    /// v4l2 gives the device's own formats and its focus. PipeWire comes last: its nodes show the same
    /// devices once more. Where a sandbox hides the devices, its nodes are what is left.
    enum class Provider { V4l2, LibCamera, Other, PipeWire };

    Provider provider = Provider::Other;
    std::string identity; ///< stays the same when the camera leaves and comes back
    std::string name;
    DevicePosition position = DevicePosition::Unspecified;
    std::vector<CaptureFormat> formats{}; ///< empty: not a camera that can be read
    std::string v4l2Path{};               ///< "/dev/video0"; empty where there is no such device behind it
    std::vector<std::string> hardware{};  ///< names of the device itself; the same device shares one
};

/// What a provider tells about a device.
struct DeviceDescription {
    std::string factory;    ///< of the provider: "v4l2deviceprovider"
    std::string objectName; ///< GStreamer's name of the device
    std::string displayName;
    const GstCaps *caps = nullptr;            ///< borrowed; may be null
    const GstStructure *properties = nullptr; ///< borrowed; may be null
};

DeviceFacts describeDevice(const DeviceDescription &description);

/// Each readable camera once, the best choice first: back, external, front, then what does not say; among
/// equals the larger picture. Cameras of one name get what tells them apart behind it.
std::vector<DeviceFacts> distinctCameras(std::vector<DeviceFacts> devices);

/// The one whose name, identity or device path is `wanted`, in any case of letters, else the only one whose
/// name has it as a part. The error says what there is.
Result<DeviceFacts> findCamera(const std::vector<DeviceFacts> &cameras, std::string_view wanted);

} // namespace skyflare
