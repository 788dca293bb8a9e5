#pragma once

#include <cstddef>

namespace skyflare {

/// The limits that settings move. Whoever reads the settings has put the default in the place of a value out
/// of bounds; the numbers here are the defaults. Lengths are in code points.
///
/// Threads: any; a value.
struct ValidationLimits {
    std::size_t publicValueLength = 500;     ///< "measurement.upload.max_event_parameter_value_length"
    std::size_t publicEventParameters = 100; ///< "measurement.upload.max_public_event_params"
    /// In one item: "measurement.upload.max_item_scoped_custom_parameters".
    std::size_t customItemParameters = 27;
    bool allowsCustomItemParameters = true; ///< "measurement.item_scoped_custom_parameter_enabled"
};

// The limits that nothing moves, in code points.
inline constexpr std::size_t longestEventName = 40;
inline constexpr std::size_t longestParameterName = 40;
inline constexpr std::size_t longestUserPropertyName = 24;
inline constexpr std::size_t longestUserPropertyValue = 36;
inline constexpr std::size_t longestOrigin = 32;
inline constexpr std::size_t longestInternalValue = 256; ///< or the public length, whichever is more
inline constexpr std::size_t mostArrayItems = 200;

} // namespace skyflare
