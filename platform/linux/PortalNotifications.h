#pragma once

#include "platform/desktop/NotificationBoard.h"
#include "platform/linux/MessageBus.h"

#include <cstdint>
#include <map>
#include <string>

namespace skyflare {

/// Notifications from within a sandbox: through the portal's Notification. They carry the app's icon, stay
/// when the program ends, and nobody tells when the user has put one away.
///
/// Threads: main. Shared. Borrows the bus, whose queue is main.
class PortalNotifications final : public NotificationBoard,
                                  public std::enable_shared_from_this<PortalNotifications> {
public:
    explicit PortalNotifications(MessageBus &sessionBus) : bus_(sessionBus) {}

    void askWhetherThere(Shown answered) override;
    void show(Content content, Shown shown, Chosen chosen) override;
    void remove(const std::string &identifier) override;

private:
    MessageBus &bus_;
    std::size_t inFlight_ = 0;
    std::map<std::string, Chosen> open_; ///< by identifier
    MessageBus::Subscription choices_;

    void listen();
    void askVersion(std::function<void(const Result<std::uint32_t> &)> answered);
    void add(const std::string &identifier, const Variant &notification, const Shown &shown);
    void didAdd(const std::string &identifier, const Result<> &outcome, const Shown &shown);
    void invoked(const std::string &identifier, const Answer &answer);
};

} // namespace skyflare
