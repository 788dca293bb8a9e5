#pragma once

#include <string>

namespace skyflare {

/// A new random UUID (RFC 4122, version 4) as text: 36 characters, upper case, from the system's source of
/// randomness. Any thread.
std::string makeUuid();

} // namespace skyflare
