#pragma once

#include <functional>

namespace skyflare {

/// What the user asked the desktop for. Numbers as in org.freedesktop.appearance "color-scheme".
enum class ColorScheme { NoPreference = 0, Dark = 1, Light = 2 };

/// Whether the desktop's programs are to be dark or light.
///
/// Threads: any.
class AppearanceSetting {
public:
    AppearanceSetting() = default;
    AppearanceSetting(const AppearanceSetting &) = delete;
    AppearanceSetting &operator=(const AppearanceSetting &) = delete;
    virtual ~AppearanceSetting() = default;

    /// Calls `changed` with the present value as soon as it is known, and with every later one, on a thread
    /// of the setting's choosing, until the setting is let go of. Never where the desktop does not say.
    virtual void observe(std::function<void(ColorScheme)> changed) = 0;
};

} // namespace skyflare
