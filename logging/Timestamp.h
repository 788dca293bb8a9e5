#pragma once

#include <optional>
#include <string>

namespace skyflare {

/// The device's own date and time, as its locale writes digits and offsets: "2025-07-04 21:15:02 GMT+02:00".
/// Time zone and locale are looked up anew, so that travelling shows.
///
/// @param secondsSince1970  wall clock; fractions are cut off
/// @return nothing where ICU cannot make the formatter. One thread at a time: the look-up of the zone is
///     state of ICU's own.
std::optional<std::string> localTimestamp(double secondsSince1970);

/// The same moment without ICU: ISO 8601 in UTC, "2025-07-04T19:15:02Z". Any thread.
std::string isoTimestamp(double secondsSince1970);

} // namespace skyflare
