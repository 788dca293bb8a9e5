#include "platform/linux/FeedbackdHaptics.h"

#include <gio/gio.h>

namespace skyflare {

namespace {

constexpr const char *service = "org.sigxcpu.Feedback";
constexpr const char *path = "/org/sigxcpu/Feedback";
constexpr unsigned mostInFlight = 4; // what comes later would be felt too late

/// Themes know few events: these are short and soft, and short and firm.
const char *eventFor(ImpactFeedbackStyle style)
{
    return style == ImpactFeedbackStyle::Heavy ? "camera-shutter" : "button-pressed";
}

} // namespace

void FeedbackdHaptics::impactOccurred(ImpactFeedbackStyle style)
{
    const auto weak = weak_from_this();
    if (!presence_)
        presence_ = bus_.watch(service, [weak](bool /*isThere*/) {
            if (const auto self = weak.lock())
                self->isMissing_ = false; // one that has gone may be startable
        });
    if (isMissing_ || inFlight_ == mostInFlight)
        return;
    ++inFlight_;
    constexpr std::int32_t once = -1;
    const auto arguments =
        g_variant_new("(ssa{sv}i)", applicationId_.c_str(), eventFor(style), nullptr, once);
    bus_.call({service, path, service, "TriggerFeedback", takeVariant(arguments), "(u)"},
              [weak](const Result<BusAnswer> &answer) {
                  const auto self = weak.lock();
                  if (!self)
                      return;
                  --self->inFlight_;
                  self->isMissing_ = !answer && isMissing(answer.error());
              });
}

} // namespace skyflare
