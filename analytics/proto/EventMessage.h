#pragma once

#include "analytics/model/APMEvent.h"
#include "platform/base/Bytes.h"

namespace skyflare {

/// An event as the bytes of an APMPBEvent, as column "data" of table "raw_events" holds it.
///
/// Texts are written as UTF-8, whatever they were. Any bytes may be read: an error, or an event.
/// Threads: any.
struct EventMessage {
    static Bytes encode(const APMEvent &event);
    static Result<APMEvent> decode(std::span<const std::uint8_t> bytes);
};

} // namespace skyflare
