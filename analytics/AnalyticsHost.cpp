#include "analytics/AnalyticsHost.h"

#include <utility>

namespace skyflare {

AnalyticsHost::AnalyticsHost(const Services &services, const Places &places, const LaunchSwitches &switches,
                             APMAppData app)
    : deployment_(places.deployment),
      suiteDefaults_(places.config / apmSuiteFile, services.console),
      configDefaults_(places.config / measurementConfigFile, services.console),
      monitor_(services.console, services.clock, decideMonitorModes(switches, configDefaults_)),
      suite_(suiteDefaults_, services.random),
      config_(configDefaults_),
      analytics_({.queues = services.queues,
                  .monitor = monitor_,
                  .clock = services.clock,
                  .ledger = ledger_,
                  .suite = suite_,
                  .config = config_,
                  .random = services.random,
                  .openDatabase =
                      [this, database = places.state / measurementDatabaseName, &clock = services.clock,
                       exclude = services.excludeFromBackup](const StoreLimits &limits) {
                          return APMDatabase::open(database, {monitor_, clock, config_, exclude}, limits);
                      },
                  .app = std::move(app),
                  .debugMode = monitor_.isDebugModeEnabled(),
                  .settings = services.settings,
                  .prepareThread = services.prepareThread,
                  .transport = services.transport,
                  .network = services.network,
                  .notificationCenter = services.notificationCenter})
{
    FIRAnalytics::setShared(&analytics_);
}

AnalyticsHost::~AnalyticsHost()
{
    FIRAnalytics::setShared(nullptr);
}

void AnalyticsHost::start()
{
    FIRAnalytics::startWithConfiguration(APMAnalyticsOptions::of(deployment_, monitor_));
}

void AnalyticsHost::close(SerialQueue &mainQueue, std::function<void()> closed)
{
    analytics_.close(mainQueue, longestClosing, std::move(closed));
}

} // namespace skyflare
