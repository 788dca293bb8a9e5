#pragma once

#include "platform/base/PropertyList.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace skyflare {

/// The numbers that bound the engine. The order is that of the table in APMRemoteConfig.cpp.
enum class APMSetting {
    UploadInterval,         ///< seconds
    InitialUploadDelayTime, ///< seconds
    RealtimeUploadInterval, ///< seconds
    DebugUploadInterval,    ///< seconds
    RetryTime,              ///< seconds
    RetryCount,
    BackoffPeriod, ///< seconds
    MaxBundles,    ///< of one batch
    MaxEventsPerBundle,
    MaxBatchSize, ///< bytes
    MaxBundlesCreatedPerIteration,
    MaxQueueTime,              ///< seconds
    StaleDataDeletionInterval, ///< seconds
    MaxEventsPerDay,
    MaxPublicEventsPerDay,
    MaxErrorEventsPerDay,
    MaxConversionsPerDay,
    MaxRealtimeEventsPerDay,
    MaxPublicUserProperties,
    MaxEventNameCardinality,
    MaxPublicEventParams,
    MaxEventParameterValueLength, ///< code points
    MaxItemScopedCustomParameters,
    MaxStoredEventsPerApp,
    NetworkTimeout,  ///< seconds
    ConfigCacheTime, ///< seconds
    TimeZoneOffsetMinutes,
    AudienceMaxCount,
    FilterMaxCountPerAudience,
    FilterResultMaxCount,
    ParameterMaxCountFilter,
    MaxCurrencyTracked,
    MonitoringSamplePeriodMillis,
    SessionTimeoutInterval,      ///< seconds
    SessionMinimumInterval,      ///< seconds
    EventUserEngagementInterval, ///< seconds
};
inline constexpr std::size_t apmSettingCount = 36;

/// What can be switched on and off. The order is that of the table in APMRemoteConfig.cpp.
enum class APMSwitch {
    BackgroundSessionEnabled,
    BlacklistInternal,
    BlacklistPublic,
    EventSamplingEnabled,
    QualityChecksum,
    ItemScopedCustomParameterEnabled,
    EfficientEngagementReportingEnabled,
    RedundantEngagementRemovalEnabled,
    AppBackgroundedTracking,
    AppInBackgroundParameter,
    SessionIDApi,
};
inline constexpr std::size_t apmSwitchCount = 11;

/// The engine's settings: what the server's configuration says, and where it says nothing usable, the
/// defaults.
///
/// A number that is missing, none, or out of bounds is the default, not the nearest bound. A switch takes
/// true and false, and the numbers 1 and 0. Threads: any; a value.
class APMRemoteConfig {
public:
    /// The defaults.
    APMRemoteConfig();
    /// @param values  by the settings' keys; other keys are passed over
    explicit APMRemoteConfig(const PropertyList::Dictionary &values);

    /// Whether a setting or a switch has this key.
    [[nodiscard]] static bool isKey(std::string_view key);

    [[nodiscard]] double number(APMSetting setting) const { return numbers_[std::size_t(setting)]; }
    /// Cut off toward zero.
    [[nodiscard]] std::int64_t integer(APMSetting setting) const
    {
        return static_cast<std::int64_t>(number(setting));
    }
    [[nodiscard]] std::size_t count(APMSetting setting) const
    {
        return static_cast<std::size_t>(integer(setting));
    }
    [[nodiscard]] bool isOn(APMSwitch which) const { return switches_[std::size_t(which)]; }

    bool operator==(const APMRemoteConfig &) const = default;

private:
    std::array<double, apmSettingCount> numbers_{};
    std::array<bool, apmSwitchCount> switches_{};
};

} // namespace skyflare
