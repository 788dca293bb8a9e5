#pragma once

#include "analytics/model/APMValue.h"

#include <string>

namespace skyflare {

/// Whether the app's own code logged it, or the engine or another component.
enum class IsPublicEvent { No, Yes };

/// Something that happened, as the engine keeps it.
///
/// Threads: any; a value.
struct APMEvent {
    std::string origin;           ///< "app", "auto", "fa", or a component that forwards
    std::string name;             ///< as it is stored: "_vs" for "screen_view"
    double timestamp = 0;         ///< seconds since 1970
    double previousTimestamp = 0; ///< of the last event of this name; 0: there was none
    APMParameters parameters;

    bool operator==(const APMEvent &) const = default;
};

} // namespace skyflare
