#include "platform/cloud/FIROptions.h"

#include "platform/base/AppInfo.h"

namespace skyflare {

FIROptions FIROptions::of(const Deployment &deployment)
{
    FIROptions options;
    const auto &values = deployment.mipemeServiceInfo;
    if (const auto found = values.find("MIPEME_APP_ID"); found != values.end())
        if (const auto *appID = found->second.as<std::string>())
            options.appID = *appID;
    options.remoteConfigURL = AppInfo::of(deployment).remoteConfigURL;
    return options;
}

} // namespace skyflare
