#pragma once

#include "analytics/pipeline/APMPersistedSuite.h"
#include "analytics/pipeline/EventLedger.h"
#include "analytics/store/APMDatabase.h"
#include "analytics/upload/APMRemoteConfig.h"
#include "analytics/worker/MeasurementConfig.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/NotificationCenter.h"
#include "platform/base/RandomSource.h"
#include "platform/net/HttpTransport.h"
#include "platform/net/NetworkMonitor.h"

#include <functional>
#include <memory>

namespace skyflare {

/// What the engine needs of the program around it. What stands here as a reference is borrowed, and used by
/// the engine's queues until these have been closed.
struct MeasurementServices {
    QueueFactory &queues;
    APMMonitor &monitor;
    const Clock &clock;
    EventLedger &ledger;
    APMPersistedSuite &suite;
    MeasurementConfig &config;
    RandomSource &random;
    std::function<Result<std::unique_ptr<APMDatabase>>(const StoreLimits &)> openDatabase;
    APMAppData app = {}; ///< without app id and app instance id, which the engine fills in
    bool debugMode = false;
    APMRemoteConfig settings = {};
    std::function<void()> prepareThread = {}; ///< run first on each of the engine's threads; may be empty
    HttpTransport *transport = nullptr;       ///< null: nothing is sent or fetched
    NetworkMonitor *network = nullptr;        ///< null: it is not known whether there is a network
    NotificationCenter *notificationCenter = nullptr; ///< told of screens and engagement; may be null
};

} // namespace skyflare
