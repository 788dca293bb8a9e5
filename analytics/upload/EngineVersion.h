#pragma once

#include <string_view>

namespace skyflare {

/// The measurement engine's version, as the servers are told it: "0.1.0". Threads: any.
[[nodiscard]] std::string_view engineVersion();

} // namespace skyflare
