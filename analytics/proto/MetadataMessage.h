#pragma once

#include "analytics/proto/APMMetadata.h"
#include "platform/base/Bytes.h"

namespace skyflare {

/// Metadata as the bytes of an APMPBMetadata, as column "metadata" of table "raw_events_metadata" holds it.
///
/// Threads: any.
struct MetadataMessage {
    static Bytes encode(const APMMetadata &metadata);
    static Result<APMMetadata> decode(std::span<const std::uint8_t> bytes);

    /// By which events name their metadata: FNV-1a of 64 bits over the message, as a signed number. It stands
    /// in files that a later version reads: it never changes.
    static std::int64_t fingerprint(std::span<const std::uint8_t> bytes);
};

} // namespace skyflare
