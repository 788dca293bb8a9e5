#pragma once

#include "platform/cloud/FIROptions.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace skyflare {

/// The app's set-up in the cloud, and what starts with it.
///
/// main registers what must know the options (the measurement engine, remote configuration, …); the
/// application's delegate configures.
///
/// Threads: main.
class FIRApp {
public:
    using Component = std::function<void(const FIROptions &)>;

    /// @param options  what configure() will find
    explicit FIRApp(FIROptions options) : given_(std::move(options)) {}
    FIRApp(const FIRApp &) = delete;
    FIRApp &operator=(const FIRApp &) = delete;

    /// `start` is called once: by configure(), in the order of registration; at once, if that has been.
    void registerComponent(Component start);

    /// Starts the components. Once; afterwards it does nothing.
    void configure();

    /// Nothing before configure().
    [[nodiscard]] const std::optional<FIROptions> &options() const { return options_; }

private:
    const FIROptions given_;
    std::vector<Component> waiting_;
    std::optional<FIROptions> options_;
};

} // namespace skyflare
