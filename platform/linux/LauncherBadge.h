#pragma once

#include "platform/desktop/AppBadge.h"
#include "platform/linux/MessageBus.h"

#include <string>
#include <utility>

namespace skyflare {

/// The number on the app's icon in docks and task bars that listen for "com.canonical.Unity.LauncherEntry";
/// Plasma, Ubuntu's dock, Plank and others do. Where nobody listens nothing happens.
///
/// Threads: main. Borrows the bus.
class LauncherBadge final : public AppBadge {
public:
    /// @param desktopEntry  the name of the app's desktop file
    LauncherBadge(MessageBus &sessionBus, std::string desktopEntry)
        : bus_(sessionBus), desktopEntry_(std::move(desktopEntry))
    {
    }

    void setCount(std::size_t count) override;

private:
    MessageBus &bus_;
    const std::string desktopEntry_;
};

} // namespace skyflare
