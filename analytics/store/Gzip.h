#pragma once

#include "platform/base/Bytes.h"

namespace skyflare {

/// In the format of RFC 1952. Threads: any.
Result<Bytes> gzip(std::span<const std::uint8_t> bytes);
/// @param most  an error where it would be longer
Result<Bytes> gunzip(std::span<const std::uint8_t> bytes, std::size_t most);

} // namespace skyflare
