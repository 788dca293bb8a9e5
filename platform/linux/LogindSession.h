#pragma once

#include "platform/desktop/UserSession.h"
#include "platform/linux/MessageBus.h"

#include <string>

namespace skyflare {

/// The user's session as logind tells of it (org.freedesktop.login1), or what stands for it. Without one it
/// says nothing.
///
/// While it observes it has a delay lock, so that the machine asks before it sleeps; a new one after each
/// sleep, and when logind has been started anew. Being locked is what the desktop says (LockedHint), and what
/// it is asked for (Lock, Unlock).
/// Threads: main. Shared. Borrows the bus, whose queue is main, and the console.
class LogindSession final : public UserSession, public std::enable_shared_from_this<LogindSession> {
public:
    LogindSession(MessageBus &systemBus, Console &console) : bus_(systemBus), console_(console) {}

    void observe(Handlers handlers) override;

private:
    MessageBus &bus_;
    Console &console_;
    Handlers handlers_;
    std::shared_ptr<const OpenFile> delay_;
    bool isAsleep_ = false; ///< or about to
    bool isReported_ = false;
    std::vector<MessageBus::Subscription> subscriptions_;

    void takeDelay();
    void observeLock(const std::string &session);
    void sleepChanged(bool sleeps);
    void didWake();
    void propertiesChanged(const Variant &values);
};

} // namespace skyflare
