#pragma once

#include "analytics/proto/APMMeasurementBundle.h"
#include "platform/base/Bytes.h"

namespace skyflare {

/// A bundle as the bytes of an APMPBMeasurementBundle.
///
/// Threads: any.
struct BundleMessage {
    static Bytes encode(const APMMeasurementBundle &bundle);
    static Result<APMMeasurementBundle> decode(std::span<const std::uint8_t> bytes);
};

} // namespace skyflare
