#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/model/APMMonitor.h"
#include "analytics/validation/Refusal.h"

#include <cstddef>
#include <string>

namespace skyflare {

/// Writes into an event's parameters what was refused: the error code as "_err", the name at fault as "_ev"
/// and the length of the value at fault as "_el". The first error stays: an event that has a marker keeps it.
///
/// Threads: as the monitor.
void addErrorMarker(APMParameters &parameters, const Refusal &refusal, APMMonitor &monitor);

/// The engine's own event "_err", for what is refused and cannot carry the marker itself.
/// @param timestamp  seconds since 1970
[[nodiscard]] APMEvent errorEvent(const Refusal &refusal, double timestamp, APMMonitor &monitor);

/// The first `length` code points and "..."; a text that is not longer stays as it is. Where memory is short
/// it stays whole, and the monitor hears of it.
[[nodiscard]] std::string trimmed(std::string text, std::size_t length, APMMonitor &monitor);

} // namespace skyflare
