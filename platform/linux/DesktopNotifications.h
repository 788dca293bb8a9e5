#pragma once

#include "platform/desktop/NotificationBoard.h"
#include "platform/linux/MessageBus.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace skyflare {

/// Notifications through the desktop's own service, org.freedesktop.Notifications.
///
/// They are put up one after the other, so that each knows the number of the one whose place it takes. Where
/// the service does not keep up, what is too much fails.
/// Threads: main. Shared. Borrows the bus, whose queue is main.
class DesktopNotifications final : public NotificationBoard,
                                   public std::enable_shared_from_this<DesktopNotifications> {
public:
    /// @param desktopEntry  the name of the app's desktop file; its icon has the same
    DesktopNotifications(MessageBus &sessionBus, std::string desktopEntry)
        : bus_(sessionBus), desktopEntry_(std::move(desktopEntry))
    {
    }

    void askWhetherThere(Shown answered) override;
    void show(Content content, Shown shown, Chosen chosen) override;
    void remove(const std::string &identifier) override;

private:
    using Capabilities = std::vector<std::string>;
    struct Request {
        Content content;
        Shown shown;
        Chosen chosen;
    };
    struct Open {
        std::string identifier;
        Chosen chosen;
        std::string activationToken{}; ///< comes before the choice, where the service has them
    };

    MessageBus &bus_;
    const std::string desktopEntry_;
    std::deque<Request> waiting_;        ///< the first is being put up
    std::map<std::uint32_t, Open> open_; ///< by the service's numbers
    std::vector<MessageBus::Subscription> subscriptions_;

    void listen();
    void askCapabilities(std::function<void(const Result<Capabilities> &)> answered);
    void begin();
    void notify(const Capabilities &capabilities);
    void finish(const Result<std::uint32_t> &id);
    [[nodiscard]] Variant argumentsOf(const Content &content, const Capabilities &capabilities) const;
    [[nodiscard]] std::uint32_t numberOf(const std::string &identifier) const;
    void invoked(std::uint32_t id, const std::string &key);
};

} // namespace skyflare
