#pragma once

#include "platform/base/DispatchQueue.h"
#include "ui/LabelOutlet.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace skyflare {

/// The line that says what goes on: the ready text, something for a while, or a warning, which stays until it
/// is taken back.
///
/// Threads: main. Borrows the label and the queue, which must outlive it.
class StatusLine : public std::enable_shared_from_this<StatusLine> {
public:
    /// @param warningChanged  called when there is a warning, and when there is none any more
    StatusLine(LabelOutlet &label, SerialQueue &mainQueue, std::function<void()> warningChanged)
        : label_(label), mainQueue_(mainQueue), warningChanged_(std::move(warningChanged))
    {
    }

    /// `text` for that time, unless it is permanent; none: what is there when nothing happens.
    void show(const std::optional<std::string> &text, int durationSeconds, bool isPermanent);

    void warn(std::string text);
    void takeBackWarning();
    [[nodiscard]] bool isWarning() const { return warning_.has_value(); }

private:
    LabelOutlet &label_;
    SerialQueue &mainQueue_;
    const std::function<void()> warningChanged_;
    std::optional<std::string> warning_;

    void showRestingText();
};

} // namespace skyflare
