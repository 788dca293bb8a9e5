#pragma once

#include "platform/base/Result.h"
#include "platform/net/CurlHandles.h"

#include <string>

namespace skyflare {

/// An address that may be asked: over TLS, or of this machine itself. As libcurl has understood it, so that
/// what was checked is what is asked.
///
/// Threads: one at a time.
struct CheckedUrl {
    CurlUrl url;
    std::string scheme; ///< "https" or "http"
    bool isLoopback = false;

    [[nodiscard]] bool isPlain() const { return scheme == "http"; }

    static Result<CheckedUrl> parse(const std::string &text);
};

} // namespace skyflare
