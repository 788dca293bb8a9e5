#pragma once

#include "watch/AnalyticsStatus.h"

#include <string>

namespace skyflare {

/// One JSON object (RFC 8259), without a line end: what --analytics-show --json prints of one event, and
/// --analytics-status --json of everything. Bytes that are no UTF-8 are replaced.
///
/// Any thread.
std::string eventJson(const RawEvent &event);
std::string statusJson(const AnalyticsStatus &status);

} // namespace skyflare
