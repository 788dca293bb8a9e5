#pragma once

#include "platform/desktop/AppearanceSetting.h"

#include <memory>

namespace skyflare {

/// Dark or light as the desktop portal says, org.freedesktop.portal.Settings. Without a session bus or a
/// portal it says nothing.
///
/// Threads: any; `changed` is called on a thread of its own, which sleeps until the desktop says something.
class PortalAppearance final : public AppearanceSetting {
public:
    PortalAppearance();
    /// Waits until `changed` has returned, if it is being called; it is not called again.
    ~PortalAppearance() override;

    /// Once.
    void observe(std::function<void(ColorScheme)> changed) override;

private:
    class Listener;
    std::unique_ptr<Listener> listener_;
};

} // namespace skyflare
