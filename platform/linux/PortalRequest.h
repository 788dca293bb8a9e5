#pragma once

#include "platform/linux/MessageBus.h"

#include <cstdint>
#include <string>

namespace skyflare {

/// A question to the desktop portal (xdg-desktop-portal) whose answer comes from the user, in its own time:
/// through the Request object that the portal makes for it.
///
/// Threads: main. Shared: who lets go of it hears no more. Borrows the bus, whose queue is main.
class PortalRequest final : public std::enable_shared_from_this<PortalRequest> {
public:
    enum class Response : std::uint32_t { Success = 0, Cancelled = 1, Ended = 2 };
    struct Answer {
        Response response = Response::Ended;
        Variant results; ///< a{sv}
    };
    struct Question {
        std::string interface; ///< such as "org.freedesktop.portal.OpenURI"
        std::string method;
        /// Makes the method's tuple around the options, which hold the token.
        std::function<_GVariant *(_GVariant *options)> arguments;
    };
    using Answered = std::function<void(const Result<Answer> &)>;

    /// @param answered  called once; an error where the portal is missing, refuses, or goes before its answer
    static std::shared_ptr<PortalRequest> ask(MessageBus &sessionBus, const Question &question,
                                              Answered answered);

private:
    MessageBus &bus_;
    const std::string token_;
    Answered answered_;
    MessageBus::Subscription response_;
    MessageBus::Subscription restart_;

    PortalRequest(MessageBus &sessionBus, Answered answered);

    void send(const Question &question);
    void finish(const Result<Answer> &answer);
};

} // namespace skyflare
