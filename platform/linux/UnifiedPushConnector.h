#pragma once

#include "platform/base/Bytes.h"
#include "platform/linux/MessageBus.h"

#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// The program's end of UnifiedPush on the session bus, in both of its versions: what a distributor calls.
///
/// Only calls with our token count, whoever they come from. Threads: main. Shared. Borrows the bus, whose
/// queue is main.
class UnifiedPushConnector final : public std::enable_shared_from_this<UnifiedPushConnector> {
public:
    struct Events {
        /// @param identifier  the distributor's own; may be empty
        std::function<void(const Bytes &message, const std::string &identifier)> message;
        std::function<void(const std::string &endpoint)> newEndpoint;
        std::function<void()> unregistered;
    };

    [[nodiscard]] static std::shared_ptr<UnifiedPushConnector> offer(MessageBus &sessionBus, Events events);

    /// Whose calls count; until then nobody's.
    void setToken(std::string token) { token_ = std::move(token); }

private:
    const Events events_;
    std::string token_;
    MessageBus::Subscription offered_;

    explicit UnifiedPushConnector(Events events) : events_(std::move(events)) {}
    [[nodiscard]] Result<Variant> serve(const BusRequest &request) const;
    void take(const std::string &method, const Variant &named) const;
    void takeMessage(const Variant &named) const;
};

} // namespace skyflare
