#pragma once

#include "platform/desktop/AppearanceSetting.h"
#include "platform/linux/MessageBus.h"

#include <memory>

namespace skyflare {

/// Dark or light as the desktop portal says, org.freedesktop.portal.Settings. Without a session bus or a
/// portal it says nothing.
///
/// Threads: main, and so is `changed`. Borrows the bus, whose queue is main.
class PortalAppearance final : public AppearanceSetting {
public:
    explicit PortalAppearance(MessageBus &sessionBus) : bus_(sessionBus) {}

    /// Once.
    void observe(std::function<void(ColorScheme)> changed) override;

private:
    MessageBus &bus_;
    std::shared_ptr<const std::function<void(ColorScheme)>> changed_;
    MessageBus::Subscription subscription_;
    MessageBus::Subscription restart_;

    void read();
};

} // namespace skyflare
