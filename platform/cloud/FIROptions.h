#pragma once

#include "platform/base/Deployment.h"

#include <string>

namespace skyflare {

/// What a deployer has set up for the cloud. All empty as shipped: then nothing is connected to.
///
/// Threads: any; a value.
struct FIROptions {
    std::string appID;           ///< "MIPEME_APP_ID" in MipemeService-Info.plist
    std::string remoteConfigURL; ///< "SkyflareRemoteConfigURL" in Info.plist

    static FIROptions of(const Deployment &deployment);
};

} // namespace skyflare
