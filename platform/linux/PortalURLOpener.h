#pragma once

#include "platform/desktop/URLOpener.h"
#include "platform/linux/PortalRequest.h"

namespace skyflare {

/// Opens addresses from within a sandbox, which sees none of the user's programs: through the portal's
/// OpenURI. There is no way from there to the desktop's settings: the app's own page tells of them.
///
/// Threads: main. Borrows its Services.
class PortalURLOpener final : public URLOpener {
public:
    struct Services {
        MessageBus &sessionBus;
        Console &console;                      ///< hears what could not be opened
        std::function<void()> ownSettingsPage; ///< shows how to come to the desktop's
    };

    explicit PortalURLOpener(Services services) : services_(std::move(services)) {}

    /// Any that may be opened: what there is to open it only the portal knows.
    [[nodiscard]] bool canOpenURL(const std::string &url) override { return isOpenableURL(url); }
    void openURL(const std::string &url) override;

private:
    const Services services_;
    std::shared_ptr<PortalRequest> request_; ///< the newest
};

} // namespace skyflare
