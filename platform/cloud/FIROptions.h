#pragma once

#include "platform/base/Console.h"

#include <filesystem>
#include <span>
#include <string>

namespace skyflare {

/// What a deployer has set up for the cloud. All empty as shipped: then nothing is connected to.
///
/// Threads: any; a value.
struct FIROptions {
    std::string appID;           ///< "MIPEME_APP_ID" in MipemeService-Info.plist
    std::string remoteConfigURL; ///< "SkyflareRemoteConfigURL" in Info.plist

    /// @param folders  where the property lists are, the one that goes before the others first
    static FIROptions load(std::span<const std::filesystem::path> folders, Console &console);
};

} // namespace skyflare
