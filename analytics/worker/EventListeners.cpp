#include "analytics/worker/EventListeners.h"

#include "analytics/worker/MeasurementLog.h"

#include <utility>

namespace skyflare {

void EventListeners::add(LogEventListenerToken token, LogEventListener listener)
{
    listeners_.insert_or_assign(token, std::move(listener));
}

void EventListeners::remove(LogEventListenerToken token)
{
    if (listeners_.erase(token) == 0)
        writeLog(monitor_, measurementLog::invalidListenerToken);
}

void EventListeners::notify(const APMEvent &event) const
{
    for (const auto &[token, listener] : listeners_)
        listener(event);
}

} // namespace skyflare
