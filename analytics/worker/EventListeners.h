#pragma once

#include "analytics/model/APMMonitor.h"
#include "analytics/worker/LogEventCall.h"

#include <map>

namespace skyflare {

/// Those who hear of every event before it is stored, in the order in which they came.
///
/// Threads: the engine's worker. Borrows the monitor.
class EventListeners {
public:
    explicit EventListeners(APMMonitor &monitor) : monitor_(monitor) {}

    void add(LogEventListenerToken token, LogEventListener listener);
    /// A token that names no listener is reported.
    void remove(LogEventListenerToken token);
    void notify(const APMEvent &event) const;

private:
    APMMonitor &monitor_;
    std::map<LogEventListenerToken, LogEventListener> listeners_; ///< a later one has a greater token
};

} // namespace skyflare
