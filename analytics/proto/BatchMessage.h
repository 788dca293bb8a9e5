#pragma once

#include "analytics/proto/APMMeasurementBatch.h"
#include "platform/base/Bytes.h"

#include <cstddef>

namespace skyflare {

/// A batch as the bytes of an APMPBMeasurementBatch.
///
/// Any bytes may be read: an error, or a batch. Threads: any.
struct BatchMessage {
    /// @param bundles  as BundleMessage has encoded them, oldest first
    static Bytes encode(const APMBatchFacts &facts, const std::vector<Bytes> &bundles);
    /// What a batch takes beside its bundles: at most that, with an engine version of up to 32 characters.
    static constexpr std::size_t mostBytesOfFacts = 9 + 34 + 2;
    /// How many bytes a batch takes more for a bundle of that many.
    static std::size_t sizeOfBundle(std::size_t bytes);
    static Result<APMMeasurementBatch> decode(std::span<const std::uint8_t> bytes);

    /// How much is in a batch, for who wants to know before decode() makes it.
    struct Counts {
        std::size_t bundles = 0;
        std::size_t events = 0;
    };
    static Result<Counts> count(std::span<const std::uint8_t> bytes);
};

} // namespace skyflare
