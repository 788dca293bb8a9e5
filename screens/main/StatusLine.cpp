#include "screens/main/StatusLine.h"

#include "platform/base/Localization.h"

#include <chrono>

namespace skyflare {

void StatusLine::show(const std::optional<std::string> &text, int durationSeconds, bool isPermanent)
{
    if (!text) {
        showRestingText();
        return;
    }
    label_.setText(*text);
    if (isPermanent)
        return;
    // Deliberate: a text that came meanwhile does not put this off.
    mainQueue_.asyncAfter(std::chrono::seconds(durationSeconds), [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->showRestingText();
    });
}

void StatusLine::warn(std::string text)
{
    warning_ = std::move(text);
    showRestingText();
    warningChanged_();
}

void StatusLine::takeBackWarning()
{
    if (!warning_)
        return;
    warning_.reset();
    showRestingText();
    warningChanged_();
}

void StatusLine::showRestingText()
{
    // Deliberate: the dots are not there when the screen loads.
    label_.setText(warning_ ? *warning_ : localized("Ready to capture fireworks") + "...");
}

} // namespace skyflare
