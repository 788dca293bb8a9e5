#include "platform/camera/DeviceProvider.h"

#include "platform/camera/PipeWireServer.h"

#include <system_error>

#include <chrono>
#include <thread>
#include <utility>

namespace skyflare {

namespace {

struct DeviceListRelease {
    void operator()(GList *list) const { g_list_free_full(list, &gst_object_unref); }
};
using PluginFeature = Handle<GstPluginFeature, &gst_object_unref>;
using Provider = Handle<GstDeviceProvider, &gst_object_unref>;
using DeviceList = std::unique_ptr<GList, DeviceListRelease>;

constexpr const char *cameraClass = "Video/Source";
constexpr const char *pipewireFactory = "pipewiredeviceprovider";
/// Long enough for what ran over a dead connection to let go of it.
constexpr std::chrono::seconds untilNextTry{1};

class ProviderThread {
public:
    ProviderThread(std::string factory, std::shared_ptr<DeviceTable> devices, std::function<void()> done)
        : factory_(std::move(factory)), devices_(std::move(devices)), firstLookDone_(std::move(done))
    {
    }

    void run()
    {
        if (factory_ == pipewireFactory)
            watchServers();
        else
            watchForEver();
    }

private:
    const std::string factory_;
    const std::shared_ptr<DeviceTable> devices_;
    std::function<void()> firstLookDone_; ///< empty once it has been called

    /// Deliberate: kept when they have been stopped, with what they showed last. A dead connection that a
    /// stream still holds calls into them.
    std::vector<Provider> providers_;
    std::vector<DeviceList> lastShown_;

    void endFirstLook()
    {
        if (const auto done = std::exchange(firstLookDone_, nullptr))
            done();
    }

    void watchForEver()
    {
        // Deliberate: neither stopped nor let go of; it ends with the process.
        GstDeviceProvider *provider = gst_device_provider_factory_get_by_name(factory_.c_str());
        const bool isWatching =
            provider && gst_device_provider_can_monitor(provider) && gst_device_provider_start(provider);
        if (provider)
            putAll(provider);
        endFirstLook();
        if (!isWatching)
            return;
        const Bus bus(gst_device_provider_get_bus(provider));
        while (const Message message{gst_bus_timed_pop(bus.get(), GST_CLOCK_TIME_NONE)})
            take(message.get());
    }

    /// One server after the other, each with a provider of its own: that does not find the next one.
    void watchServers()
    {
        GstDeviceProvider *provider = nullptr;
        for (;; wait()) {
            auto server = PipeWireServer::connect();
            if (server && !provider)
                provider = newProvider();
            if (server && provider && gst_device_provider_start(provider))
                followUntilEnd(std::exchange(provider, nullptr), *server);
            endFirstLook();
        }
    }

    static void wait() { g_usleep(std::chrono::microseconds(untilNextTry).count()); }

    /// Not the one that its factory gives to everybody, which would be the dead one again.
    [[nodiscard]] GstDeviceProvider *newProvider()
    {
        const PluginFeature found(GST_PLUGIN_FEATURE(gst_device_provider_factory_find(factory_.c_str())));
        const PluginFeature loaded(found ? gst_plugin_feature_load(found.get()) : nullptr);
        if (!loaded)
            return nullptr;
        const GType type =
            gst_device_provider_factory_get_device_provider_type(GST_DEVICE_PROVIDER_FACTORY(loaded.get()));
        auto *made = GST_DEVICE_PROVIDER(gst_object_ref_sink(g_object_new(type, nullptr)));
        providers_.emplace_back(made);
        return made;
    }

    void followUntilEnd(GstDeviceProvider *provider, PipeWireServer &server)
    {
        putAll(provider);
        endFirstLook();
        const Bus bus(gst_device_provider_get_bus(provider));
        GPollFD message{};
        gst_bus_get_pollfd(bus.get(), &message);
        bool isAlive = true;
        while (isAlive) {
            isAlive = server.waitForEndOr(message);
            while (const Message next{gst_bus_pop(bus.get())})
                take(next.get());
        }
        lastShown_.emplace_back(gst_device_provider_get_devices(provider));
        for (const GList *item = lastShown_.back().get(); item; item = item->next)
            devices_->remove(GST_DEVICE(item->data));
        // Streams and providers share one connection, and all must let go of the dead one before the next.
        // The provider goes last: what the server said before it died still calls into it.
        wait();
        gst_device_provider_stop(provider);
    }

    void putAll(GstDeviceProvider *provider)
    {
        const DeviceList list(gst_device_provider_get_devices(provider));
        for (const GList *item = list.get(); item; item = item->next)
            put(GST_DEVICE(item->data));
    }

    void put(GstDevice *device, const GstDevice *replaced = nullptr)
    {
        if (gst_device_has_classes(device, cameraClass))
            devices_->put(device, factsOf(device), replaced);
    }

    [[nodiscard]] DeviceFacts factsOf(GstDevice *device) const
    {
        const GLibText objectName(gst_object_get_name(GST_OBJECT(device)));
        const GLibText displayName(gst_device_get_display_name(device));
        const Caps caps(gst_device_get_caps(device));
        const Structure properties(gst_device_get_properties(device));
        return describeDevice({.factory = factory_,
                               .objectName = objectName ? objectName.get() : "",
                               .displayName = displayName ? displayName.get() : "",
                               .caps = caps.get(),
                               .properties = properties.get()});
    }

    void take(GstMessage *message)
    {
        GstDevice *device = nullptr;
        GstDevice *before = nullptr;
        switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_DEVICE_ADDED:
            gst_message_parse_device_added(message, &device);
            put(device);
            break;
        case GST_MESSAGE_DEVICE_CHANGED:
            gst_message_parse_device_changed(message, &device, &before);
            put(device, before);
            break;
        case GST_MESSAGE_DEVICE_REMOVED:
            gst_message_parse_device_removed(message, &device);
            devices_->remove(device);
            break;
        default:
            break;
        }
        const Device held(device);
        const Device heldBefore(before);
    }
};

} // namespace

std::vector<std::string> DeviceProvider::factoriesForVideo()
{
    const DeviceList list(gst_device_provider_factory_list_get_device_providers(GST_RANK_MARGINAL));
    std::vector<std::string> names;
    for (const GList *item = list.get(); item; item = item->next) {
        auto *factory = GST_DEVICE_PROVIDER_FACTORY(item->data);
        if (gst_device_provider_factory_has_classes(factory, cameraClass))
            names.emplace_back(gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(factory)));
    }
    return names;
}

Result<> DeviceProvider::watch(const std::string &factory, std::shared_ptr<DeviceTable> devices,
                               std::function<void()> firstLookDone)
{
    try {
        ProviderThread work(factory, std::move(devices), std::move(firstLookDone));
        std::thread([work = std::move(work)]() mutable { work.run(); }).detach();
    } catch (const std::system_error &failure) {
        return Error{"camera", 0, std::string("the cameras cannot be looked for: ") + failure.what()};
    }
    return {};
}

} // namespace skyflare
