#pragma once

#include "analytics/store/StoreLimits.h"
#include "analytics/upload/APMRemoteConfig.h"
#include "analytics/validation/ValidationLimits.h"
#include "analytics/worker/DailyLimits.h"

#include <cstdint>

namespace skyflare {

/// All the limits that the settings move, as each part of the engine takes them.
///
/// Threads: any; a value.
struct MeasurementLimits {
    ValidationLimits validation;
    StoreLimits store;
    DailyLimits daily;
    std::int64_t publicEventNames = 2'000;
    std::int64_t publicUserProperties = 100;

    static MeasurementLimits of(const APMRemoteConfig &settings);
};

} // namespace skyflare
