#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/PropertyList.h"

#include <string>

namespace skyflare {

/// What the server says of the settings: one JSON object of setting keys and values.
///
/// Any bytes may be parsed. What is too large, nested too deeply or no object is an error; a key that is not
/// known, or whose value is of no kind that a setting can have, is passed over. Whether a value is within its
/// bounds is for APMRemoteConfig to say.
///
/// Threads: any; a value.
struct SettingsAnswer {
    PropertyList::Dictionary values; ///< by the settings' keys
    std::string uploadSubdomain;     ///< of the collection host; any text

    static Result<SettingsAnswer> parse(std::span<const std::uint8_t> json);

    bool operator==(const SettingsAnswer &) const = default;
};

} // namespace skyflare
