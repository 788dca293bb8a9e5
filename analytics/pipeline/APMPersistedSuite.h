#pragma once

#include "platform/base/RandomSource.h"
#include "platform/base/Result.h"
#include "platform/base/UserDefaults.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace skyflare {

/// The suite's file, in the folder of the settings.
inline constexpr std::string_view apmSuiteFile = "APMAnalyticsSuiteName.plist";

/// A key of the suite, and of which type its value is.
template <typename T> struct APMSuiteKey {
    std::string_view name;
};

namespace suiteKeys {

inline constexpr APMSuiteKey<std::int64_t> resetRetryCount{"reset_retry_count"};
inline constexpr APMSuiteKey<bool> needFirstOpenAfterReset{"need_first_open_after_reset"};
/// The app instance id, from the first one on.
inline constexpr APMSuiteKey<std::string> appInstanceID{"app_instance_id_after_reset"};
/// What setAnalyticsCollectionEnabled: was told last.
inline constexpr APMSuiteKey<bool> analyticsCollection{"deferred_analytics_collection"};
inline constexpr APMSuiteKey<std::string> consentSettings{"consent_settings"};
inline constexpr APMSuiteKey<std::string> consentSettings3P{"consent_settings_3p"};
inline constexpr APMSuiteKey<std::string> consentSettingsTCF{"consent_settings_tcf"};
inline constexpr APMSuiteKey<std::string> consentSettingsOnStart{"consent_settings_on_start"};
inline constexpr APMSuiteKey<std::int64_t> consentSource{"consent_source"};
inline constexpr APMSuiteKey<bool> deferredConsentReset{"deferred_consent_reset"};

} // namespace suiteKeys

/// What the engine keeps beside its database: the suite "APMAnalyticsSuiteName" of the user defaults, by
/// type.
///
/// A setter writes the file, and so does asking for the app instance id when there is none yet: not for a
/// thread that may not wait for a disk.
///
/// Threads: any. Borrows its defaults and its random source, which must outlive it.
class APMPersistedSuite {
public:
    /// @param defaults  those of `apmSuiteFile`
    APMPersistedSuite(UserDefaults &defaults, RandomSource &random) : defaults_(defaults), random_(random) {}

    [[nodiscard]] std::optional<bool> value(APMSuiteKey<bool> key) const;
    [[nodiscard]] std::optional<std::int64_t> value(APMSuiteKey<std::int64_t> key) const;
    [[nodiscard]] std::optional<std::string> value(APMSuiteKey<std::string> key) const;

    void setValue(bool value, APMSuiteKey<bool> key);
    void setValue(std::int64_t value, APMSuiteKey<std::int64_t> key);
    void setValue(std::string value, APMSuiteKey<std::string> key);
    template <typename T> void removeValue(APMSuiteKey<T> key) { defaults_.removeObjectForKey(key.name); }

    /// 32 lower-case hexadecimal digits, the same for ever until a reset. Made when first asked for, and anew
    /// where something else was found in its place.
    /// @return the error "Cannot generate a new app instance ID" if the random source has failed
    Result<std::string> appInstanceID();

    /// A new one in its place. After an error the old one stays.
    Result<std::string> resetAppInstanceID();

private:
    UserDefaults &defaults_;
    RandomSource &random_;
    std::mutex makingID_; ///< so that two who ask first are told the same

    Result<std::string> makeID();
};

} // namespace skyflare
