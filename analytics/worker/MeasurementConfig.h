#pragma once

#include "analytics/store/APMPersistedConfig.h"
#include "platform/base/UserDefaults.h"

#include <optional>

namespace skyflare {

/// The file of the engine's configuration, in the folder of the settings.
inline constexpr std::string_view measurementConfigFile = "measurement.plist";

/// What the engine keeps between runs about its own working: keys that begin with "/mipeme/measurement/". The
/// monitor's modes stand in the same file (LaunchArguments.h).
///
/// A setter writes the file. Threads: the engine's worker. Borrows its defaults.
class MeasurementConfig final : public APMPersistedConfig {
public:
    /// @param defaults  those of `measurementConfigFile`
    explicit MeasurementConfig(UserDefaults &defaults) : defaults_(defaults) {}

    /// Seconds since 1970; 0: never.
    [[nodiscard]] double lastStaleDataDeletion() const override;
    void setLastStaleDataDeletion(double secondsSince1970) override;

    /// How long after midnight UTC a day of the daily limits begins, in seconds; negative: before it. Taken
    /// from the settings when it is first asked for, and kept, so that a day never has two beginnings.
    /// @param timeZoneOffsetMinutes  of the account, as the settings have it
    double midnightOffset(double timeZoneOffsetMinutes);
    /// Nothing: it was never asked for.
    [[nodiscard]] std::optional<double> keptMidnightOffset() const;

    /// For those parts of the engine that keep something of their own there.
    [[nodiscard]] UserDefaults &defaults() { return defaults_; }

private:
    UserDefaults &defaults_;
};

} // namespace skyflare
