#pragma once

#include "platform/desktop/HapticFeedback.h"
#include "platform/linux/MessageBus.h"

#include <memory>
#include <string>

namespace skyflare {

/// What the user feels, through feedbackd (org.sigxcpu.Feedback), as its theme has it.
///
/// Where there is none it is looked for once, and again when one comes. One that does not keep up misses
/// some. Nothing is ever said of it.
/// Threads: main. Shared. Borrows the bus, whose queue is main.
class FeedbackdHaptics final : public HapticFeedback, public std::enable_shared_from_this<FeedbackdHaptics> {
public:
    FeedbackdHaptics(MessageBus &sessionBus, std::string applicationId)
        : bus_(sessionBus), applicationId_(std::move(applicationId))
    {
    }

    void impactOccurred(ImpactFeedbackStyle style) override;

private:
    MessageBus &bus_;
    const std::string applicationId_;
    bool isMissing_ = false;
    unsigned inFlight_ = 0;
    MessageBus::Subscription presence_;
};

} // namespace skyflare
