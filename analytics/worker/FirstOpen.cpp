#include "analytics/worker/FirstOpen.h"

namespace skyflare {

bool FirstOpen::takeDue()
{
    if (isSettled_ || !journal_.begin())
        return false;
    const auto isKnown = journal_.knowsEventName(eventName);
    if (!isKnown)
        return false;
    isSettled_ = true;
    if (!suite_.value(suiteKeys::needFirstOpenAfterReset).value_or(false))
        return !*isKnown;
    // Before the event is committed: if the process ends in between, the next one finds neither the flag nor
    // the event, for a reset has made the engine forget all names.
    suite_.removeValue(suiteKeys::needFirstOpenAfterReset);
    return true;
}

void FirstOpen::makeDue()
{
    suite_.setValue(true, suiteKeys::needFirstOpenAfterReset);
    isSettled_ = false;
}

} // namespace skyflare
