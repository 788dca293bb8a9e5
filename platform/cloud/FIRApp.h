#pragma once

#include "platform/cloud/FIROptions.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace skyflare {

/// The app's set-up in the cloud, and what starts with it.
///
/// main registers what must know the options (the measurement engine, remote configuration, …); the
/// application's delegate configures.
///
/// Threads: main. Borrows the console.
class FIRApp {
public:
    using Component = std::function<void(const FIROptions &)>;

    /// @param folders  where the property lists are, the one that goes before the others first
    FIRApp(std::vector<std::filesystem::path> folders, Console &console);
    FIRApp(const FIRApp &) = delete;
    FIRApp &operator=(const FIRApp &) = delete;

    /// `start` is called once: by configure(), in the order of registration; at once, if that has been.
    void registerComponent(Component start);

    /// Reads the options and starts the components. Once; afterwards it does nothing.
    void configure();

    /// Nothing before configure().
    [[nodiscard]] const std::optional<FIROptions> &options() const { return options_; }

private:
    const std::vector<std::filesystem::path> folders_;
    Console &console_;
    std::vector<Component> waiting_;
    std::optional<FIROptions> options_;
};

} // namespace skyflare
