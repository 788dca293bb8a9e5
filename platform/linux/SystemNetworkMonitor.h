#pragma once

#include "platform/linux/PlatformThread.h"
#include "platform/net/NetworkMonitor.h"

#include <atomic>
#include <memory>
#include <mutex>

struct _GNetworkMonitor; // NOLINT(bugprone-reserved-identifier): GIO's

namespace skyflare {

/// The kernel's routes, as GIO watches them: there is a way to other machines where there is a default route.
/// Has one socket, to the kernel, as long as it lives.
///
/// Threads: any; has one of its own. Made and ended by one owner, neither of which waits for a network. Until
/// its thread has looked, it is not known.
class SystemNetworkMonitor final : public NetworkMonitor {
public:
    SystemNetworkMonitor();
    ~SystemNetworkMonitor() override;

    [[nodiscard]] bool isConnected() const override { return isConnected_; }
    void observe(std::function<void()> changed) override;

private:
    struct Release {
        void operator()(_GNetworkMonitor *monitor) const;
    };

    std::recursive_mutex mutex_; ///< held while `changed_` runs, which may observe anew
    std::function<void()> changed_;
    std::atomic<bool> isConnected_ = true;
    std::unique_ptr<_GNetworkMonitor, Release> monitor_; ///< the thread's; null where GIO has none
    PlatformThread thread_;                              ///< last: it uses all of the above

    void begin();
    void look();
};

} // namespace skyflare
