#pragma once

#include "analytics/proto/APMMeasurementBatch.h"
#include "collector/EventLines.h"
#include "platform/base/Result.h"

#include <cstdint>
#include <span>

namespace skyflare {

/// What no engine sends is refused before it costs memory or disk. The errors are one line for whoever sent
/// it.
///
/// Threads: any.

/// Before a batch is decoded: an event or a bundle of two bytes takes far more in memory.
Result<> checkCounts(std::span<const std::uint8_t> batch);

/// Whether every bundle has its names, and the events' lines come to a bearable length.
Result<> checkBatch(const APMMeasurementBatch &batch, const Arrival &arrival);

} // namespace skyflare
