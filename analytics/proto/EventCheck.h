#pragma once

#include <cstdint>
#include <span>

namespace skyflare {

/// Whether bytes are an APMPBEvent that has a name and that any protobuf decoder reads, so that they may be
/// put into a bundle as they are. Every field is looked at, nested ones too; nothing is allocated.
///
/// Any thread.
bool isSoundEvent(std::span<const std::uint8_t> message);

} // namespace skyflare
