#pragma once

#include "platform/camera/DeviceFacts.h"
#include "platform/camera/GstHandles.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

using Device = Handle<GstDevice, &gst_object_unref>;

/// The devices that the providers have shown; those that are away are remembered.
///
/// Threads: any. Who waits for a removal is called on the thread that tells of it, without the table's lock.
class DeviceTable {
public:
    /// A device is there. `replaced` is the one that it stands for from now on; may be null.
    void put(GstDevice *device, DeviceFacts facts, const GstDevice *replaced = nullptr);
    void remove(const GstDevice *device);

    /// What is there now.
    [[nodiscard]] std::vector<DeviceFacts> present() const;
    /// The device of that identity; empty while it is away.
    [[nodiscard]] Device device(const std::string &identity) const;

    /// Calls `removed` once, when the device of that identity goes; never after what this returns is gone.
    [[nodiscard]] std::shared_ptr<void> whenRemoved(const std::string &identity,
                                                    std::function<void()> removed);

private:
    struct Entry {
        Device device; ///< empty: away
        DeviceFacts facts;
    };
    class Watcher;

    std::vector<std::shared_ptr<Watcher>> takeWatchers(const std::string &identity);

    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
    std::vector<std::pair<std::string, std::weak_ptr<Watcher>>> watchers_;
};

} // namespace skyflare
