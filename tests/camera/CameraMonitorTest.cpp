// What providers say about cameras, and what becomes of it: names, places, formats, focus.

#include "platform/camera/CameraFormats.h"
#include "platform/camera/DeviceCamera.h"
#include "platform/camera/GstSetup.h"
#include "platform/linux/V4l2Focus.h"

#include <doctest/doctest.h>
#include <linux/videodev2.h>

#include <algorithm>
#include <cerrno>
#include <map>

using namespace skyflare;

namespace {

constexpr const char *webcamCaps =
    "video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1;"
    "video/x-raw,format=YUY2,width=1280,height=720,framerate=10/1;"
    "video/x-raw,format=YUY2,width=640,height=480,framerate={(fraction)30/1,(fraction)15/1};"
    "image/jpeg,width=1920,height=1080,framerate={(fraction)30/1,(fraction)15/1};"
    "image/jpeg,width=640,height=480,framerate=30/1;"
    "video/x-h264,width=3840,height=2160,framerate=30/1";

Caps capsFrom(const char *text)
{
    REQUIRE(initialiseGStreamer());
    return Caps(gst_caps_from_string(text));
}

std::string textOf(const Caps &caps)
{
    return caps ? GLibText(gst_caps_to_string(caps.get())).get() : "nothing";
}

DeviceFacts described(const char *factory, const char *name, const char *properties,
                      const char *caps = webcamCaps)
{
    const Caps held = capsFrom(caps);
    const Structure structure(gst_structure_from_string(properties, nullptr));
    REQUIRE(structure);
    return describeDevice({factory, name, name, held.get(), structure.get()});
}

struct FakeDevice : GstDevice {};
struct FakeDeviceClass : GstDeviceClass {};
G_DEFINE_TYPE(FakeDevice, fake_device, GST_TYPE_DEVICE)
void fake_device_init(FakeDevice *) {}
void fake_device_class_init(FakeDeviceClass *fakeClass)
{
    fakeClass->create_element = [](GstDevice *, const gchar *name) {
        return gst_element_factory_make("videotestsrc", name);
    };
}

Device deviceWith(const char *caps)
{
    const Caps held = capsFrom(caps);
    return Device(GST_DEVICE(gst_object_ref_sink(
        g_object_new(fake_device_get_type(), "caps", held.get(), "device-class", "Video/Source", nullptr))));
}

/// The controls of a video device, and every setting of one in its order.
struct PlayedDevice {
    std::map<std::uint32_t, std::int32_t> least; ///< of each control that there is
    __u32 priority = V4L2_PRIORITY_DEFAULT;
    std::vector<std::pair<std::uint32_t, std::int32_t>> settings;

    int answer(unsigned long request, void *argument)
    {
        if (request == VIDIOC_G_PRIORITY) {
            *static_cast<__u32 *>(argument) = priority;
        } else if (request == VIDIOC_QUERYCTRL) {
            auto &query = *static_cast<v4l2_queryctrl *>(argument);
            if (!least.contains(query.id))
                return EINVAL;
            query.minimum = least[query.id];
        } else if (request == VIDIOC_S_CTRL) {
            const auto &control = *static_cast<v4l2_control *>(argument);
            settings.emplace_back(control.id, control.value);
        }
        return 0;
    }
};

} // namespace

TEST_CASE("of a camera's formats the largest fluent one is taken, as it comes")
{
    struct Row {
        const char *caps;
        const char *chosen;
        std::size_t listed;
    };
    static constexpr Row rows[] = {
        {webcamCaps, "image/jpeg, width=(int)1920, height=(int)1080, framerate=(fraction)30/1", 6},
        // a phone's sensor: any size, no rate; its raw Bayer pictures cannot be read
        {"video/x-bayer,format=rggb,width=4056,height=3040;"
         "video/x-raw,format={(string)NV21,(string)NV12},width=[32,4032,16],height=[32,3024,2]",
         "video/x-raw, format=(string)NV12, width=(int)4032, height=(int)3024", 2},
        // lists that were taken apart: 1280 x 480 does not exist
        {"video/"
         "x-raw,format={(string)YUY2,(string)UYVY},width={(int)640,(int)1280},height={(int)480,(int)720},"
         "framerate=[(fraction)0/1,(fraction)60/1];image/jpeg,width=1280,height=720,framerate=30/1",
         "video/x-raw, format=(string)YUY2, width=(int)1280, height=(int)720, framerate=(fraction)30/1", 4},
        // whatever one likes
        {"video/x-raw,format=RGBx,width=[1,2147483647],height=[1,2147483647],framerate=[0/1,2147483647/1]",
         "video/x-raw, format=(string)RGBx, width=(int)1920, height=(int)1080, framerate=(fraction)30/1", 2},
        // never fluent: the quickest
        {"video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1;"
         "video/x-raw,format=YUY2,width=640,height=480,framerate=10/1",
         "video/x-raw, format=(string)YUY2, width=(int)640, height=(int)480, framerate=(fraction)10/1", 2},
        // 29.97 is no less than 30
        {"image/jpeg,width=640,height=480,framerate=30/1;"
         "video/x-raw,format=GRAY8,width=640,height=480,framerate={(fraction)60/1,(fraction)30000/1001}",
         "video/x-raw, format=(string)GRAY8, width=(int)640, height=(int)480, framerate=(fraction)30000/1001",
         3},
        {"video/x-raw(memory:DMABuf),format=NV12,width=640,height=480,framerate=30/1", "nothing", 0},
        {"ANY", "nothing", 0},
        {"video/x-raw,format=NV12,width=0,height=-3;audio/x-raw", "nothing", 0},
    };
    for (const Row &row : rows) {
        const Caps caps = capsFrom(row.caps);
        REQUIRE(caps);
        CAPTURE(row.caps);
        CHECK(textOf(chosenCaps(caps.get())) == row.chosen);
        CHECK(formatsIn(caps.get()).size() == row.listed);
    }
}

TEST_CASE("each camera is listed once, the best choice first")
{
    constexpr const char *usb = "p,device.path=/dev/video2,device.bus=usb,device.vendor.id=(string)046d,"
                                "device.product.id=(string)0825,"
                                "device.bus_path=(string)\"pci-0000:00:14.0-usb-0:2:1.0\"";
    const auto cameras = distinctCameras(
        {described("pipewiredeviceprovider", "HD Webcam", "p,node.name=a,api.v4l2.path=/dev/video2"),
         described("v4l2deviceprovider", "HD Webcam", usb),
         described("libcameraprovider", "\\_SB_.PCI0.XHC_-2:1.0-046d:0825", "p"),
         described("libcameraprovider", "/base/soc/i2c@1/imx219@10", "p"),
         described(
             "pipewiredeviceprovider", "Main Camera",
             "p,node.name=b,api.libcamera.path=\"/base/soc/i2c@1/imx219@10\",api.libcamera.location=back"),
         described("libcameraprovider", "/base/soc/i2c@2/imx476@10",
                   "p,api.libcamera.Location=CameraLocationFront"),
         described("v4l2deviceprovider", "Integrated Camera", "p,device.path=/dev/video0,device.bus=usb"),
         described("v4l2deviceprovider", "Metadata", "p,device.path=/dev/video1", "application/x-meta"),
         described("pipewiredeviceprovider", "Playback Loop", "p,node.name=c", "image/jpeg,width=8,height=8"),
         described("pipewiredeviceprovider", "playback loop", "p,node.name=d")});
    std::string list;
    for (const DeviceFacts &camera : cameras)
        list += camera.name + ", " + std::string(nameOf(camera.position)) + ", " + camera.identity + "\n";
    CHECK(list == "Main Camera, back, libcamera:/base/soc/i2c@1/imx219@10\n"
                  "HD Webcam, external, v4l2:pci-0000:00:14.0-usb-0:2:1.0\n"
                  "Integrated Camera, front, v4l2:/dev/video0\n"
                  "imx476, front, libcamera:/base/soc/i2c@2/imx476@10\n"
                  "playback loop (pipewire:d), unspecified, pipewire:d\n"
                  "Playback Loop (pipewire:c), unspecified, pipewire:c\n");

    for (const char *wanted : {"hd webcam", "WEB", "/dev/video2"}) {
        CAPTURE(wanted);
        REQUIRE(findCamera(cameras, wanted));
        CHECK(findCamera(cameras, wanted)->name == "HD Webcam");
    }
    CHECK(findCamera(cameras, "Camera").error().message.starts_with("more than one camera is named"));
    CHECK(findCamera({cameras[1]}, "nobody").error().message ==
          "no camera is named \"nobody\"; there is \"HD Webcam\"");
    CHECK_FALSE(findCamera(cameras, ""));
}

TEST_CASE("a camera that was away can be read again, and its loss is told once")
{
    const auto devices = std::make_shared<DeviceTable>();
    const DeviceFacts facts = described("v4l2deviceprovider", "HD Webcam", "p,device.path=/dev/video0");
    const Device first = deviceWith(webcamCaps);
    const Device twin = deviceWith(webcamCaps);
    devices->put(first.get(), facts);
    devices->put(first.get(), facts);
    devices->put(twin.get(), facts); // on the same bus: another camera
    REQUIRE(devices->present().size() == 2);
    CHECK(devices->present()[1].identity == "v4l2:/dev/video0#2");

    const DeviceCamera camera(facts, devices, {});
    int losses = 0;
    int forgotten = 0;
    std::shared_ptr<void> watch = camera.whenRemoved([&] {
        ++losses;
        watch.reset();
    });
    camera.whenRemoved([&] { ++forgotten; }).reset();
    devices->remove(twin.get());
    CHECK(losses == 0);
    devices->remove(first.get());
    devices->remove(first.get());
    CHECK(losses == 1);
    CHECK(camera.makeElement().error().message == "HD Webcam is not connected");

    const Device second = deviceWith("video/x-raw,format=YUY2,width={(int)320,(int)640},"
                                     "height={(int)240,(int)480},framerate=[15/1,60/1]");
    devices->put(second.get(), facts);
    const auto element = camera.makeElement();
    REQUIRE(element);
    const Pad pad(gst_element_get_static_pad(element->get(), "src"));
    REQUIRE(pad);
    const auto given = textOf(Caps(gst_pad_query_caps(pad.get(), nullptr)));
    CHECK(given.find("format=(string)YUY2, width=(int)640, height=(int)480, framerate=(fraction)30/1") !=
          std::string::npos);
    devices->remove(second.get());
    CHECK(losses == 1);
    CHECK(forgotten == 0);
}

TEST_CASE("a tap focuses with what the motor has")
{
    constexpr std::uint32_t continuous = V4L2_CID_FOCUS_AUTO;
    constexpr std::uint32_t once = V4L2_CID_AUTO_FOCUS_START;
    constexpr std::uint32_t absolute = V4L2_CID_FOCUS_ABSOLUTE;
    using Settings = decltype(PlayedDevice::settings);
    struct Row {
        std::map<std::uint32_t, std::int32_t> controls;
        Settings expected;
    };
    const Row rows[] = {
        {{{continuous, 0}, {once, 0}, {absolute, 0}}, {{continuous, 0}, {once, 1}}},
        {{{continuous, 0}, {absolute, 3}}, {{continuous, 0}, {continuous, 1}}},
        {{{absolute, 3}}, {{absolute, 3}}},
        {{}, {}},
    };
    DeviceFacts facts = described("v4l2deviceprovider", "HD Webcam", "p,device.path=/dev/video0");
    for (const Row &row : rows) {
        PlayedDevice device;
        device.least = row.controls;
        const auto open = [&device](const std::string &) -> Result<V4l2Focus::DeviceCall> {
            return V4l2Focus::DeviceCall([&device](unsigned long request, void *argument) {
                return device.answer(request, argument);
            });
        };
        DeviceCamera camera(facts, {}, [&open](const std::string &path) {
            CHECK(path == "/dev/video0");
            return std::make_shared<V4l2Focus>(path, open);
        });
        camera.setFocusMode(FocusMode::AutoFocus); // not locked: nothing happens
        REQUIRE(camera.lockForConfiguration());
        CHECK_FALSE(camera.lockForConfiguration());
        camera.setFocusPointOfInterest({0.5, 0.5});
        camera.setFocusMode(FocusMode::AutoFocus);
        camera.unlockForConfiguration();
        CHECK(device.settings == row.expected);
        device.priority = V4L2_PRIORITY_RECORD;
        CHECK(camera.lockForConfiguration().error().message ==
              "/dev/video0 is being configured by another program");
    }
    CHECK(V4l2Focus("/dev/no-such-video").lock().error().message == "/dev/no-such-video is not connected");
    facts.v4l2Path.clear();
    CHECK(DeviceCamera(facts, {}, [](const std::string &) { return nullptr; }).lockForConfiguration());
}
