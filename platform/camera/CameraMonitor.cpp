#include "platform/camera/CameraMonitor.h"

#include "platform/camera/DeviceCamera.h"
#include "platform/camera/DeviceProvider.h"
#include "platform/camera/GstSetup.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace skyflare {

/// How many providers have not yet said what is there.
struct CameraMonitor::FirstLook {
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t pending = 0;
    std::chrono::steady_clock::time_point end{};

    void oneIsDone()
    {
        const std::scoped_lock lock(mutex);
        --pending;
        changed.notify_all();
    }
    void wait()
    {
        std::unique_lock lock(mutex);
        changed.wait_until(lock, end, [this] { return pending == 0; });
    }
};

CameraMonitor &CameraMonitor::shared(const FocusControlFactory &focus)
{
    // Deliberate: never freed. Its threads end with the process.
    static CameraMonitor *const monitor = new CameraMonitor(focus);
    monitor->firstLook_->wait();
    return *monitor;
}

CameraMonitor::CameraMonitor(FocusControlFactory focus)
    : focus_(std::move(focus)),
      devices_(std::make_shared<DeviceTable>()),
      firstLook_(std::make_shared<FirstLook>()),
      outcome_(initialiseGStreamer())
{
    if (outcome_)
        start();
}

void CameraMonitor::start()
{
    const auto factories = DeviceProvider::factoriesForVideo();
    firstLook_->pending = factories.size();
    firstLook_->end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    for (const auto &factory : factories) {
        const auto started =
            DeviceProvider::watch(factory, devices_, [look = firstLook_] { look->oneIsDone(); });
        if (!started) {
            outcome_ = started.error();
            firstLook_->oneIsDone();
        }
    }
}

std::shared_ptr<CameraSource> CameraMonitor::camera(DeviceFacts facts) const
{
    return std::make_shared<DeviceCamera>(std::move(facts), devices_, focus_);
}

std::vector<std::shared_ptr<CameraSource>> CameraMonitor::cameras() const
{
    std::vector<std::shared_ptr<CameraSource>> cameras;
    for (DeviceFacts &facts : distinctCameras(devices_->present()))
        cameras.push_back(camera(std::move(facts)));
    return cameras;
}

Result<std::shared_ptr<CameraSource>> CameraMonitor::cameraNamed(std::string_view name) const
{
    if (!outcome_)
        return outcome_.error();
    auto found = findCamera(distinctCameras(devices_->present()), name);
    if (!found)
        return found.error();
    return camera(std::move(*found));
}

} // namespace skyflare
