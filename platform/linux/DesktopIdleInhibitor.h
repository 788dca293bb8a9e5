#pragma once

#include "platform/desktop/IdleInhibitor.h"
#include "platform/linux/MessageBus.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// Keeps the screen awake by the desktop portal, else by the screen saver, else by the session manager:
/// whichever says yes first is asked once, however many want it. One that does not answer is passed over, and
/// a yes that comes too late is given back. When the one goes, or another comes while none has said yes, all
/// are asked again, but not without end.
///
/// The services let go of it themselves when the program leaves the bus, however it ends. What keeps saying
/// no is said once; that there is none is no fault.
/// Threads: main. Shared. Borrows the bus, whose queue is main, that queue, and the
/// console.
class DesktopIdleInhibitor final : public IdleInhibitor,
                                   public std::enable_shared_from_this<DesktopIdleInhibitor> {
public:
    DesktopIdleInhibitor(MessageBus &sessionBus, SerialQueue &mainQueue, Console &console,
                         std::string applicationId)
        : bus_(sessionBus), mainQueue_(mainQueue), console_(console), applicationId_(std::move(applicationId))
    {
    }

    [[nodiscard]] Inhibition inhibit(const std::string &reason) override;

private:
    enum class State { Idle, Asking, Held };

    MessageBus &bus_;
    SerialQueue &mainQueue_;
    Console &console_;
    const std::string applicationId_;
    std::vector<MessageBus::Subscription> services_;
    MessageBus::Subscription refusal_; ///< the portal may take its yes back
    std::string reason_;
    std::size_t wanted_ = 0; ///< by how many
    State state_ = State::Idle;
    std::size_t way_ = 0;          ///< that is asked, or has said yes
    unsigned question_ = 0;        ///< the number of the last one
    unsigned renewals_ = 0;        ///< since it was first wanted
    bool hasNewService_ = false;   ///< since the first way was asked
    BusCall undo_;                 ///< while it is held
    std::optional<Error> refused_; ///< by one that is there
    bool isReported_ = false;

    void watchServices();
    void start();
    void ask(std::size_t way);
    void listenForRefusal(const std::string &token);
    void answered(const Result<BusAnswer> &answer);
    void failed(const Error &error);
    void giveUp();
    void renew();
    void serviceChanged(std::size_t way, bool isThere);
    void unwanted();
    void release();
    void undo(BusCall call);
};

} // namespace skyflare
