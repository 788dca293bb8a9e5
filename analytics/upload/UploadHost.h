#pragma once

#include "platform/base/Result.h"
#include "platform/net/NetworkMonitor.h"

#include <string>
#include <string_view>

namespace skyflare {

/// A host that measurements go to or settings come from, as a deployer names it: "collect.example.org",
/// "host:8443", "https://host"; "http://127.0.0.1:8765" of this machine alone.
///
/// Nothing else may stand there: no path but a last "/", no user, no query. What the host is asked, and by
/// which path, is the engine's to say.
///
/// Threads: any; a value.
struct UploadHost {
    std::string scheme = "https";
    std::string name; ///< or an address, as it stands in a web address: "[::1]"
    std::string port; ///< ":8443"; empty: the scheme's own
    bool isLoopback = false;

    static Result<UploadHost> parse(std::string_view text);

    /// @param path  begins with "/"
    [[nodiscard]] std::string url(std::string_view path) const
    {
        return scheme + "://" + name + port + std::string(path);
    }

    /// As far as is known: this machine needs no network, and without a monitor there is one.
    [[nodiscard]] bool isReachable(const NetworkMonitor *network) const
    {
        return isLoopback || !network || network->isConnected();
    }

    /// With `label` in front of the name. An address and this machine have no subdomains, and what is no
    /// label of a name, or would make the name too long, is passed over.
    [[nodiscard]] UploadHost withSubdomain(std::string_view label) const;

    bool operator==(const UploadHost &) const = default;
};

} // namespace skyflare
