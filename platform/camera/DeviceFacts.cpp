#include "platform/camera/DeviceFacts.h"

#include "platform/base/Text.h"
#include "platform/camera/CameraFormats.h"
#include "platform/camera/GstHandles.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <tuple>

namespace skyflare {

namespace {

using Provider = DeviceFacts::Provider;

std::string property(const GstStructure *properties, const char *name)
{
    const char *text = properties ? gst_structure_get_string(properties, name) : nullptr;
    return text ? text : "";
}

/// The first of these properties that says something.
template <typename... Names> std::string firstOf(const GstStructure *properties, Names... names)
{
    std::string text;
    ((text.empty() ? void(text = property(properties, names)) : void()), ...);
    return text;
}

/// For comparing without regard to the case of letters, in any alphabet.
std::string folded(std::string_view text)
{
    const GLibText folding(g_utf8_casefold(validUtf8(text).c_str(), -1));
    return folding.get();
}

bool hasWord(const std::string &text, std::string_view word)
{
    const auto isLetter = [&text](std::size_t at) {
        return at < text.size() && std::isalpha(static_cast<unsigned char>(text[at])) != 0;
    };
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        if ((at == 0 || !isLetter(at - 1)) && !isLetter(at + word.size()))
            return true;
    }
    return false;
}

struct PositionWord {
    std::string_view word;
    DevicePosition position;
};

/// "Built-in" alone means a lid with a camera that looks at the user.
constexpr std::array<PositionWord, 8> positionWords{{
    {"back", DevicePosition::Back},
    {"rear", DevicePosition::Back},
    {"front", DevicePosition::Front},
    {"user-facing", DevicePosition::Front},
    {"integrated", DevicePosition::Front},
    {"built-in", DevicePosition::Front},
    {"builtin", DevicePosition::Front},
    {"external", DevicePosition::External},
}};

std::optional<DevicePosition> positionInWords(const std::string &text)
{
    const std::string lower = folded(text);
    const auto *row = std::ranges::find_if(
        positionWords, [&lower](const PositionWord &candidate) { return hasWord(lower, candidate.word); });
    return row == positionWords.end() ? std::nullopt : std::optional(row->position);
}

/// libcamera's word ("back", or "CameraLocationBack" with newer ones), else the name's, else the bus's.
DevicePosition positionOf(const DeviceDescription &description)
{
    const GstStructure *properties = description.properties;
    std::string location = firstOf(properties, "api.libcamera.location", "api.libcamera.Location");
    if (const std::string prefix = "CameraLocation"; location.starts_with(prefix))
        location.erase(0, prefix.size());
    if (const auto position = positionInWords(location))
        return *position;
    if (const auto position = positionInWords(description.displayName))
        return *position;
    const bool isOnUsb =
        property(properties, "device.bus") == "usb" ||
        firstOf(properties, "v4l2.device.bus_info", "api.v4l2.cap.bus_info").starts_with("usb-");
    return isOnUsb ? DevicePosition::External : DevicePosition::Unspecified;
}

/// libcamera ends the id of a USB camera in port, interface, vendor and product: "…-8:1.0-046d:0825".
void addLibCameraNames(std::vector<std::string> &hardware, const std::string &id)
{
    if (id.empty())
        return;
    hardware.push_back("libcamera:" + id);
    const auto product = id.rfind('-');
    if (product == std::string::npos || product == 0 || id.find(':', product) == std::string::npos)
        return;
    const auto port = id.rfind('-', product - 1);
    if (port != std::string::npos && id.find(':', port) < product)
        hardware.push_back("usb" + id.substr(port));
}

void addV4l2Names(std::vector<std::string> &hardware, const DeviceFacts &facts,
                  const GstStructure *properties)
{
    if (facts.v4l2Path.empty())
        return;
    hardware.push_back("v4l2:" + facts.v4l2Path);
    // "pci-0000:00:14.0-usb-0:8:1.0": the port and the interface are what libcamera names too.
    const std::string bus = property(properties, "device.bus_path");
    const auto usb = bus.rfind("-usb-");
    const auto port = usb == std::string::npos ? usb : bus.find(':', usb);
    if (port != std::string::npos)
        hardware.push_back("usb-" + bus.substr(port + 1) + "-" + property(properties, "device.vendor.id") +
                           ":" + property(properties, "device.product.id"));
}

Provider providerNamed(std::string_view factory)
{
    if (factory == "v4l2deviceprovider")
        return Provider::V4l2;
    if (factory == "libcameraprovider")
        return Provider::LibCamera;
    return factory == "pipewiredeviceprovider" ? Provider::PipeWire : Provider::Other;
}

/// What stays when the camera is taken off and put back: a v4l2 device may get another number then.
std::string identityOf(Provider provider, const DeviceDescription &description)
{
    const GstStructure *properties = description.properties;
    const auto orName = [&description](const std::string &key) {
        return key.empty() ? description.displayName : key;
    };
    switch (provider) {
    case Provider::V4l2:
        return "v4l2:" + orName(firstOf(properties, "device.bus_path", "device.path"));
    case Provider::LibCamera:
        return "libcamera:" + description.objectName;
    case Provider::PipeWire:
        return "pipewire:" + orName(firstOf(properties, "node.name", "object.path", "object.serial"));
    case Provider::Other:
        break;
    }
    return description.factory + ":" + orName(firstOf(properties, "device.path", "object.path"));
}

/// What libcamera's provider shows as a name is the device's path in the firmware: "/base/i2c@1/imx219@10".
std::string nameFrom(Provider provider, const DeviceDescription &description)
{
    std::string name = description.displayName.empty() ? description.objectName : description.displayName;
    if (provider == Provider::LibCamera && name == description.objectName) {
        name.erase(0, name.find_last_of("/\\") + 1);
        if (const auto address = name.find('@'); address != std::string::npos && address > 0)
            name.erase(address);
    }
    return name.empty() ? "Camera" : name;
}

double largestArea(const DeviceFacts &facts)
{
    return facts.formats.empty() ? 0 : static_cast<double>(facts.formats[0].width) * facts.formats[0].height;
}

int placeOf(DevicePosition position)
{
    static constexpr std::array order{DevicePosition::Back, DevicePosition::External, DevicePosition::Front,
                                      DevicePosition::Unspecified};
    return static_cast<int>(std::ranges::find(order, position) - order.begin());
}

bool sharesHardware(const DeviceFacts &one, const DeviceFacts &other)
{
    return std::ranges::find_first_of(one.hardware, other.hardware) != one.hardware.end();
}

/// Takes over what the better way to the same camera does not say.
void learnFrom(DeviceFacts &kept, const DeviceFacts &twin)
{
    if (kept.position == DevicePosition::Unspecified)
        kept.position = twin.position;
    if (kept.v4l2Path.empty())
        kept.v4l2Path = twin.v4l2Path;
    if (kept.provider == Provider::LibCamera && twin.provider == Provider::PipeWire)
        kept.name = twin.name; // a person's word instead of the firmware's
    kept.hardware.insert(kept.hardware.end(), twin.hardware.begin(), twin.hardware.end());
}

std::string whatThereIs(const std::vector<DeviceFacts> &cameras)
{
    std::string text;
    for (const DeviceFacts &camera : cameras)
        text += (text.empty() ? "there is " : ", ") + quoted(camera.name);
    return text.empty() ? "there is no camera" : text;
}

} // namespace

DeviceFacts describeDevice(const DeviceDescription &description)
{
    const Provider provider = providerNamed(description.factory);
    DeviceFacts facts{.provider = provider,
                      .identity = identityOf(provider, description),
                      .name = nameFrom(provider, description),
                      .position = positionOf(description),
                      .formats = formatsIn(description.caps)};
    facts.v4l2Path = firstOf(description.properties, "api.v4l2.path", "device.path");
    addV4l2Names(facts.hardware, facts, description.properties);
    addLibCameraNames(facts.hardware, provider == Provider::LibCamera
                                          ? description.objectName
                                          : property(description.properties, "api.libcamera.path"));
    return facts;
}

std::vector<DeviceFacts> distinctCameras(std::vector<DeviceFacts> devices)
{
    std::erase_if(devices, [](const DeviceFacts &facts) { return facts.formats.empty(); });
    std::ranges::stable_sort(devices, {}, &DeviceFacts::provider);
    std::vector<DeviceFacts> cameras;
    for (DeviceFacts &device : devices) {
        const auto twin = std::ranges::find_if(
            cameras, [&device](const DeviceFacts &kept) { return sharesHardware(kept, device); });
        if (twin == cameras.end())
            cameras.push_back(std::move(device));
        else
            learnFrom(*twin, device);
    }
    std::ranges::stable_sort(cameras, {}, [](const DeviceFacts &camera) {
        return std::tuple(placeOf(camera.position), -largestArea(camera), camera.provider, camera.identity);
    });
    const auto listed = cameras;
    for (DeviceFacts &camera : cameras) {
        if (std::ranges::count(listed, folded(camera.name),
                               [](const DeviceFacts &other) { return folded(other.name); }) > 1)
            camera.name += " (" + (camera.v4l2Path.empty() ? camera.identity : camera.v4l2Path) + ")";
    }
    return cameras;
}

Result<DeviceFacts> findCamera(const std::vector<DeviceFacts> &cameras, std::string_view wanted)
{
    const std::string key = folded(wanted);
    const auto isNamed = [&key](const DeviceFacts &camera) {
        return key == folded(camera.name) || key == folded(camera.identity) || key == camera.v4l2Path;
    };
    const auto hasPart = [&key](const DeviceFacts &camera) {
        return folded(camera.name).find(key) != std::string::npos;
    };
    if (const auto whole = std::ranges::find_if(cameras, isNamed); whole != cameras.end() && !key.empty())
        return *whole;
    const auto fitting = key.empty() ? 0 : std::ranges::count_if(cameras, hasPart);
    if (fitting == 1)
        return *std::ranges::find_if(cameras, hasPart);
    return Error{"camera", 0,
                 (fitting > 1 ? "more than one camera is named " : "no camera is named ") + quoted(wanted) +
                     "; " + whatThereIs(cameras)};
}

} // namespace skyflare
