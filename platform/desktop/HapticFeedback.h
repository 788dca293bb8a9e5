#pragma once

namespace skyflare {

enum class ImpactFeedbackStyle { Light = 0, Medium = 1, Heavy = 2 };

/// Lets the user feel what the app does.
///
/// Threads: main; no call waits for the device.
class HapticFeedback {
public:
    HapticFeedback() = default;
    HapticFeedback(const HapticFeedback &) = delete;
    HapticFeedback &operator=(const HapticFeedback &) = delete;
    virtual ~HapticFeedback() = default;

    virtual void impactOccurred(ImpactFeedbackStyle style) = 0;
};

} // namespace skyflare
