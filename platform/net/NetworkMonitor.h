#pragma once

#include <functional>

namespace skyflare {

/// Whether the machine has a way to other machines at all.
///
/// Threads: any.
class NetworkMonitor {
public:
    NetworkMonitor() = default;
    NetworkMonitor(const NetworkMonitor &) = delete;
    NetworkMonitor &operator=(const NetworkMonitor &) = delete;
    virtual ~NetworkMonitor() = default;

    /// True where it is not known.
    [[nodiscard]] virtual bool isConnected() const = 0;

    /// Calls `changed` when isConnected() has changed, on a thread of the monitor's choice, which it must not
    /// hold up. In place of the one before; an empty one ends it: when that returns, the one before neither
    /// runs nor will run.
    virtual void observe(std::function<void()> changed) = 0;
};

} // namespace skyflare
