#pragma once

#include "platform/linux/MessageBus.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// The programs on the session bus that bring push messages (UnifiedPush, both versions), running or ready to
/// be started.
///
/// Threads: main. Shared: who lets go of it hears no more. Borrows the bus, whose queue is main.
class UnifiedPushDistributors final : public std::enable_shared_from_this<UnifiedPushDistributors> {
public:
    struct Registration {
        std::string service; ///< the bus name that messages go to
        std::string token;
        std::string description; ///< of the app, for its user
    };
    using Found = std::function<void(const Result<std::vector<std::string>> &names)>;
    using Registered = std::function<void(const Result<> &)>;

    explicit UnifiedPushDistributors(MessageBus &sessionBus) : bus_(sessionBus) {}

    /// Their bus names, in order; an error where there is no bus.
    void find(Found found);
    /// @param registered  the error is for a person. The address to send to comes to the connector, later.
    void registerWith(const std::string &name, const Registration &registration, Registered registered);
    /// Calls `appeared` whenever one has started.
    [[nodiscard]] MessageBus::Subscription watch(std::function<void(const std::string &name)> appeared) const;

private:
    MessageBus &bus_;

    void list(const char *method, std::vector<std::string> names, Found found);
    void registerByVersion1(const std::string &name, const Registration &registration, Registered registered);
};

} // namespace skyflare
