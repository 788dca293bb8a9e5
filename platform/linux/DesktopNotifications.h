#pragma once

#include "platform/linux/MessageBus.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace skyflare {

/// Notifications through the desktop's own service, org.freedesktop.Notifications.
///
/// Threads: main. Shared. Borrows the bus, whose queue is main.
class DesktopNotifications final : public std::enable_shared_from_this<DesktopNotifications> {
public:
    struct Action {
        std::string key; ///< "default": the notification itself is chosen; it has no button
        std::string title;
    };
    struct Content {
        std::string summary;
        std::string body; ///< plain text
        std::vector<Action> actions;
    };
    using Shown = std::function<void(const Result<> &)>;
    using Chosen = std::function<void(const std::string &key)>;

    /// @param desktopEntry  the name of the app's desktop file; its icon has the same
    DesktopNotifications(MessageBus &sessionBus, std::string desktopEntry)
        : bus_(sessionBus), desktopEntry_(std::move(desktopEntry))
    {
    }

    /// An error where there is no such service, or none whose notifications have actions that are wanted.
    /// @param chosen  called once at most; may be empty
    void show(Content content, Shown shown, Chosen chosen);

private:
    MessageBus &bus_;
    const std::string desktopEntry_;
    std::map<std::uint32_t, Chosen> open_;
    std::vector<MessageBus::Subscription> subscriptions_;

    void listen();
    void notify(const Content &content, const std::vector<std::string> &capabilities, Shown shown,
                Chosen chosen);
    [[nodiscard]] Variant argumentsOf(const Content &content, const std::string &body) const;
    void invoked(std::uint32_t id, const std::string &key);
};

} // namespace skyflare
