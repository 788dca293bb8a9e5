#include "platform/camera/DeviceTable.h"

#include <algorithm>
#include <utility>

namespace skyflare {

/// One call that is waited for. Letting go of it waits for a call that is under way; a callee may let go.
class DeviceTable::Watcher {
public:
    explicit Watcher(std::function<void()> removed) : removed_(std::move(removed)) {}

    void call()
    {
        const std::scoped_lock lock(mutex_);
        if (const auto removed = std::exchange(removed_, nullptr))
            removed();
    }
    void forget()
    {
        const std::scoped_lock lock(mutex_);
        removed_ = nullptr;
    }

private:
    std::recursive_mutex mutex_;
    std::function<void()> removed_;
};

void DeviceTable::put(GstDevice *device, DeviceFacts facts, const GstDevice *replaced)
{
    const std::scoped_lock lock(mutex_);
    const auto holds = [](const GstDevice *wanted) {
        return [wanted](const Entry &entry) { return entry.device && entry.device.get() == wanted; };
    };
    auto entry = std::ranges::find_if(entries_, holds(device));
    if (entry == entries_.end() && replaced)
        entry = std::ranges::find_if(entries_, holds(replaced));
    if (entry != entries_.end()) {
        facts.identity = entry->facts.identity;
    } else {
        // One bus may carry two cameras at once: the later one is told apart by a number.
        const auto hasIdentity = [](const std::string &identity) {
            return [identity](const Entry &candidate) { return candidate.facts.identity == identity; };
        };
        const std::string first = facts.identity;
        int number = 1;
        do {
            entry = std::ranges::find_if(entries_, hasIdentity(facts.identity));
            if (entry != entries_.end() && entry->device)
                facts.identity = first + "#" + std::to_string(++number);
        } while (entry != entries_.end() && entry->device);
    }
    Entry made{Device(GST_DEVICE(gst_object_ref(device))), std::move(facts)};
    if (entry == entries_.end())
        entries_.push_back(std::move(made));
    else
        *entry = std::move(made);
}

void DeviceTable::remove(const GstDevice *device)
{
    std::vector<std::shared_ptr<Watcher>> watchers;
    {
        const std::scoped_lock lock(mutex_);
        const auto entry = std::ranges::find_if(
            entries_, [device](const Entry &candidate) { return candidate.device.get() == device; });
        if (!device || entry == entries_.end())
            return;
        entry->device.reset();
        watchers = takeWatchers(entry->facts.identity);
    }
    for (const auto &watcher : watchers)
        watcher->call();
}

std::vector<std::shared_ptr<DeviceTable::Watcher>> DeviceTable::takeWatchers(const std::string &identity)
{
    std::vector<std::shared_ptr<Watcher>> taken;
    std::erase_if(watchers_, [&](const auto &waiting) {
        const auto watcher = waiting.second.lock();
        if (watcher && waiting.first == identity)
            taken.push_back(watcher);
        return !watcher || waiting.first == identity;
    });
    return taken;
}

std::vector<DeviceFacts> DeviceTable::present() const
{
    const std::scoped_lock lock(mutex_);
    std::vector<DeviceFacts> facts;
    for (const Entry &entry : entries_) {
        if (entry.device)
            facts.push_back(entry.facts);
    }
    return facts;
}

Device DeviceTable::device(const std::string &identity) const
{
    const std::scoped_lock lock(mutex_);
    const auto entry = std::ranges::find_if(
        entries_, [&identity](const Entry &candidate) { return candidate.facts.identity == identity; });
    if (entry == entries_.end() || !entry->device)
        return {};
    return Device(GST_DEVICE(gst_object_ref(entry->device.get())));
}

std::shared_ptr<void> DeviceTable::whenRemoved(const std::string &identity, std::function<void()> removed)
{
    auto watcher = std::make_shared<Watcher>(std::move(removed));
    const std::scoped_lock lock(mutex_);
    std::erase_if(watchers_, [](const auto &waiting) { return waiting.second.expired(); });
    watchers_.emplace_back(identity, watcher);
    // The table may hold the watcher for the length of a call: what the caller holds is the right to be
    // called.
    return {watcher.get(), [watcher](void *) { watcher->forget(); }};
}

} // namespace skyflare
