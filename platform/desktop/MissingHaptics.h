#pragma once

#include "platform/desktop/HapticFeedback.h"

namespace skyflare {

/// A device that cannot be felt. Any thread.
class MissingHaptics final : public HapticFeedback {
public:
    void impactOccurred(ImpactFeedbackStyle /*style*/) override {}
};

} // namespace skyflare
