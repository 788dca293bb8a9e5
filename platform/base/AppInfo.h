#pragma once

#include "platform/base/Deployment.h"

#include <string>

namespace skyflare {

/// What Info.plist says about the app. All texts; what is not there, or of another type, is empty.
///
/// Threads: any; a value.
struct AppInfo {
    /// "CFBundleShortVersionString", such as "1.2.3". Of our own file alone: a deployer's copy would go on
    /// telling of the version that it was copied from.
    std::string shortVersion;

    std::string remoteConfigURL; ///< "SkyflareRemoteConfigURL": https, or http to this machine; empty: none
    std::string storePage;       ///< "SkyflareStorePage": the address that "Update" opens
    std::string supportAddress;  ///< "SkyflareSupportAddress": an e-mail address

    static AppInfo of(const Deployment &deployment);
};

} // namespace skyflare
