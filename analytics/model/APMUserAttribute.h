#pragma once

#include "analytics/model/APMValue.h"

#include <string>

namespace skyflare {

/// A property of the user as it is now.
///
/// Threads: any; a value.
struct APMUserAttribute {
    std::string name;        ///< one that begins with "_" is the engine's own
    std::string origin;      ///< who set it: "app", "auto" …
    double setTimestamp = 0; ///< seconds since 1970
    APMValue value;

    bool operator==(const APMUserAttribute &) const = default;
};

} // namespace skyflare
