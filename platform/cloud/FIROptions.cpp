#include "platform/cloud/FIROptions.h"

#include "platform/base/AppInfo.h"
#include "platform/base/DeploymentFile.h"

namespace skyflare {

FIROptions FIROptions::load(std::span<const std::filesystem::path> folders, Console &console)
{
    FIROptions options;
    const auto values = readDeploymentFile(folders, "MipemeService-Info.plist", console);
    if (const auto found = values.find("MIPEME_APP_ID"); found != values.end())
        if (const auto *appID = found->second.as<std::string>())
            options.appID = *appID;
    options.remoteConfigURL = AppInfo::load(folders, console).remoteConfigURL;
    return options;
}

} // namespace skyflare
