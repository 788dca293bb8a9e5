#pragma once

#include "analytics/proto/APMMeasurementBundle.h"
#include "platform/base/Bytes.h"

#include <cstddef>
#include <string>

namespace skyflare {

/// A bundle as the bytes of an APMPBMeasurementBundle.
///
/// Any bytes may be read: an error, or a bundle. Threads: any.
struct BundleMessage {
    static Bytes encode(const APMMeasurementBundle &bundle);
    /// The same with events that are encoded already, in place of the bundle's own.
    /// @param events  as appendEvent has put them together
    static Bytes encode(const APMMeasurementBundle &bundle, std::span<const std::uint8_t> events);
    /// @param event  an APMPBEvent
    static void appendEvent(Bytes &events, std::span<const std::uint8_t> event);
    /// How many bytes a bundle takes more for an event of that many.
    static std::size_t sizeOfEvent(std::size_t bytes);

    /// What a queue has to know of a bundle.
    struct Head {
        std::string appId;
        double endTimestamp = 0;
        std::uint64_t events = 0;
    };
    /// Without looking into the events. Any bytes may be read.
    static Result<Head> head(std::span<const std::uint8_t> bytes);
    static Result<APMMeasurementBundle> decode(std::span<const std::uint8_t> bytes);
};

} // namespace skyflare
