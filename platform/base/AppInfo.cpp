#include "platform/base/AppInfo.h"

#include <array>
#include <string_view>

namespace skyflare {

namespace {

constexpr std::string_view shortVersionKey = "CFBundleShortVersionString";

struct InfoRow {
    std::string_view key;
    std::string AppInfo::*field;
};

constexpr std::array<InfoRow, 3> infoRows{{
    {"SkyflareRemoteConfigURL", &AppInfo::remoteConfigURL},
    {"SkyflareStorePage", &AppInfo::storePage},
    {"SkyflareSupportAddress", &AppInfo::supportAddress},
}};

std::string textIn(const PropertyList::Dictionary &values, std::string_view key)
{
    const auto found = values.find(key);
    const auto *text = found == values.end() ? nullptr : found->second.as<std::string>();
    return text ? *text : std::string();
}

} // namespace

AppInfo AppInfo::of(const Deployment &deployment)
{
    AppInfo info;
    for (const InfoRow &row : infoRows)
        info.*row.field = textIn(deployment.info, row.key);
    info.shortVersion = textIn(deployment.ownInfo, shortVersionKey);
    return info;
}

} // namespace skyflare
