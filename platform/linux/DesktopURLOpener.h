#pragma once

#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/desktop/URLOpener.h"

#include <functional>
#include <string>

namespace skyflare {

/// Opens addresses in the programs that the desktop has for them (GIO). In a sandbox there are none:
/// PortalURLOpener.
///
/// The settings page is that of the running desktop, by XDG_CURRENT_DESKTOP, where its program is installed
/// and starts; else the app's own page.
///
/// Threads: main; programs are started on `queue`. Borrows its Services.
class DesktopURLOpener final : public URLOpener {
public:
    struct Services {
        DispatchQueue &queue;                  ///< starts programs
        SerialQueue &mainQueue;                ///< where the own page is shown
        Console &console;                      ///< hears what could not be opened
        std::function<void()> ownSettingsPage; ///< shows how to come to the desktop's; empty: there is none
    };

    explicit DesktopURLOpener(Services services) : services_(std::move(services)) {}

    [[nodiscard]] bool canOpenURL(const std::string &url) override;
    void openURL(const std::string &url) override;

private:
    const Services services_;

    void openSettings();
};

} // namespace skyflare
