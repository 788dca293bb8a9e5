#pragma once

#include <cstdint>
#include <span>

namespace skyflare {

/// Turns a filtered row of 8-bit RGB back into pixels (ISO/IEC 15948, 9.2).
/// @param filtered  the filter's number, then as many bytes as a row has.
/// @param above  the row above as pixels; zeros above the first one.
/// @return false for a filter that does not exist. Any thread.
[[nodiscard]] bool unfilterRow(std::span<const std::uint8_t> filtered, std::span<const std::uint8_t> above,
                               std::span<std::uint8_t> rgb);

} // namespace skyflare
