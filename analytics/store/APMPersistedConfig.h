#pragma once

namespace skyflare {

/// What the store remembers outside its database.
///
/// Threads: the store's.
class APMPersistedConfig {
public:
    APMPersistedConfig() = default;
    APMPersistedConfig(const APMPersistedConfig &) = delete;
    APMPersistedConfig &operator=(const APMPersistedConfig &) = delete;
    virtual ~APMPersistedConfig() = default;

    /// Seconds since 1970; 0: never.
    [[nodiscard]] virtual double lastStaleDataDeletion() const = 0;
    virtual void setLastStaleDataDeletion(double secondsSince1970) = 0;
};

} // namespace skyflare
