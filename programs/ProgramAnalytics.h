#pragma once

#include "analytics/AnalyticsHost.h"
#include "platform/linux/SystemNetworkMonitor.h"
#include "platform/linux/SystemRandom.h"
#include "platform/linux/UserDirectories.h"

#include <functional>
#include <memory>

namespace skyflare {

/// The measurement engine as our programs have it: with this machine's facts, files and network. Nothing
/// watches the network where the deployer names no other machine that events go to.
///
/// Threads: main. Borrows its Services, which must outlive it; it may go when close() has reported and the
/// queues are closed.
class ProgramAnalytics {
public:
    struct Services {
        QueueFactory &queues;
        const Clock &clock; ///< never a film's: a day has its limits
        Console &console;
        HttpTransport &transport;
        NotificationCenter &notificationCenter;
    };

    ProgramAnalytics(const Services &services, const AnalyticsHost::Places &places,
                     const LaunchSwitches &switches);

    /// Where a program's engine has its files.
    static AnalyticsHost::Places places(const UserDirectories &directories, Deployment deployment);

    void start() { host_.start(); }
    /// As AnalyticsHost::close(), 250 ms at most.
    void close(SerialQueue &mainQueue, std::function<void()> closed)
    {
        host_.close(mainQueue, std::move(closed));
    }

private:
    SystemRandom random_;
    const std::unique_ptr<SystemNetworkMonitor> network_; ///< null: nothing leaves this machine
    AnalyticsHost host_;
};

} // namespace skyflare
