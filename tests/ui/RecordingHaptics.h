#pragma once

#include "platform/desktop/HapticFeedback.h"

#include <vector>

namespace skyflare {

/// Notes what would have been felt.
struct RecordingHaptics final : HapticFeedback {
    std::vector<ImpactFeedbackStyle> impacts;

    void impactOccurred(ImpactFeedbackStyle style) override { impacts.push_back(style); }
};

} // namespace skyflare
