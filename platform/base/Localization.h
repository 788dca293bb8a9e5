#pragma once

#include <string>
#include <string_view>

namespace skyflare {

/// A text for the user in the user's language; the English text itself is the key and the fallback.
///
/// There are no tables yet, so every text is the fallback. Any thread.
inline std::string localized(std::string_view key)
{
    return std::string(key);
}

} // namespace skyflare
