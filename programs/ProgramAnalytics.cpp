#include "programs/ProgramAnalytics.h"

#include "analytics/upload/UploadHost.h"
#include "platform/linux/BackgroundThread.h"
#include "platform/linux/BackupExclusion.h"
#include "platform/linux/MachineFacts.h"

#include <utility>

namespace skyflare {

namespace {

/// What is wrong with the options is said when the engine starts.
struct SilentMonitor final : APMMonitor {
    [[nodiscard]] bool isLogging(Level /*level*/) const override { return false; }
    void log(Level /*level*/, int /*messageCode*/, std::string_view /*message*/) override {}
};

/// Null where events go nowhere, or to this machine.
std::unique_ptr<SystemNetworkMonitor> networkFor(const Deployment &deployment)
{
    SilentMonitor monitor;
    const auto host = UploadHost::parse(APMAnalyticsOptions::of(deployment, monitor).collectionHost);
    return host && !host->isLoopback ? std::make_unique<SystemNetworkMonitor>() : nullptr;
}

APMAppData appData()
{
    const MachineFacts machine = MachineFacts::read();
    return {.appVersion = SKYFLARE_VERSION,
            .platform = machine.platform,
            .osVersion = machine.osVersion,
            .deviceModel = machine.deviceModel,
            .language = machine.language};
}

} // namespace

ProgramAnalytics::ProgramAnalytics(const Services &services, const AnalyticsHost::Places &places,
                                   const LaunchSwitches &switches)
    : network_(networkFor(places.deployment)),
      host_({.queues = services.queues,
             .clock = services.clock,
             .console = services.console,
             .random = random_,
             .excludeFromBackup = &excludeFromBackup,
             .prepareThread = &becomeBackgroundThread,
             .transport = &services.transport,
             .network = network_.get(),
             .notificationCenter = &services.notificationCenter},
            places, switches, appData())
{
}

AnalyticsHost::Places ProgramAnalytics::places(const UserDirectories &directories, Deployment deployment)
{
    return {.config = directories.config, .state = directories.state, .deployment = std::move(deployment)};
}

} // namespace skyflare
